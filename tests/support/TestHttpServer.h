#pragma once
// A small HTTP/1.1 server on 127.0.0.1 for tests and benchmarks, running on its own thread.
// Each path is given a behaviour: a status and body, a delay before answering, a redirect,
// or one of the ways a hostile server misbehaves (a body cut off, a lying length, a drip
// feed, endless headers). It counts requests, keeps their headers and counts the bytes it
// sent for each path.

#include "core/EventLoopScheduler.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

class QTcpServer;
class QTcpSocket;

namespace orvanta::testing {

struct Route {
    // How the body's end is announced.
    enum class Length {
        actual,   // Content-Length: the size of `body`
        declared, // Content-Length: `declaredLength`, whatever `body` holds
        none,     // no Content-Length: the body ends when the connection closes (or by chunking)
    };
    // A head that never ends, sent as fast as the client reads (up to floodLimit bytes).
    enum class Flood {
        none,
        headerLines, // one short header line after another
        oneLine,     // a single header line that never reaches its end
    };

    int status = 200;
    QByteArray body;              // sent as is: encode it first for chunked or gzip answers
    QByteArray contentType = "application/octet-stream";
    std::vector<QByteArray> headers; // more header lines, such as "Content-Encoding: gzip"
    Length length = Length::actual;
    qint64 declaredLength = 0;
    qsizetype cutAfter = -1;      // >= 0: send this many body bytes, then reset the connection
    int delayMs = 0;              // wait this long before sending anything
    int dripIntervalMs = 0;       // > 0: send the body one byte per interval
    Flood flood = Flood::none;
    std::string redirectTo;       // non-empty: answer 302 with this Location
};

struct RecordedRequest {
    std::string path;             // with query, as requested
    std::map<std::string, std::string> headers; // lower-case names
};

class TestHttpServer {
public:
    // A flood stops after this many bytes, so a client that keeps reading cannot run forever.
    static constexpr qint64 floodLimit = qint64(256) << 20;

    TestHttpServer();
    ~TestHttpServer();

    void route(const std::string& path, Route route);
    // Base URL such as "http://127.0.0.1:41234".
    std::string baseUrl() const;
    std::string url(const std::string& path) const { return baseUrl() + path; }

    int requestCount() const;
    int requestCount(const std::string& path) const;
    std::vector<RecordedRequest> requests() const;
    // Bytes written to clients for requests of `path` (without query), head included.
    qint64 bytesSent(const std::string& path) const;

private:
    void serve(QTcpSocket* socket);
    void respond(QTcpSocket* socket, const RecordedRequest& request);
    void send(QTcpSocket* socket, const std::string& path, const QByteArray& bytes);

    std::shared_ptr<core::EventLoopScheduler> thread_;
    std::unique_ptr<QTcpServer> server_;
    quint16 port_ = 0;
    mutable std::mutex mutex_;
    std::map<std::string, Route> routes_;
    std::vector<RecordedRequest> requests_;
    std::map<std::string, qint64> sent_;
};

} // namespace orvanta::testing
