#pragma once
// A small HTTP/1.1 server on 127.0.0.1 for tests and benchmarks, running on its own thread.
// Each path is given a behaviour: a status and body, a delay before answering, a connection
// closed halfway through the body, or a redirect. It counts requests and keeps their headers.

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
    int status = 200;
    QByteArray body;
    QByteArray contentType = "application/octet-stream";
    int delayMs = 0;              // wait this long before sending anything
    bool closeMidBody = false;    // announce the full length, send half, close
    std::string redirectTo;       // non-empty: answer 302 with this Location
};

struct RecordedRequest {
    std::string path;             // with query, as requested
    std::map<std::string, std::string> headers; // lower-case names
};

class TestHttpServer {
public:
    TestHttpServer();
    ~TestHttpServer();

    void route(const std::string& path, Route route);
    // Base URL such as "http://127.0.0.1:41234".
    std::string baseUrl() const;
    std::string url(const std::string& path) const { return baseUrl() + path; }

    int requestCount() const;
    int requestCount(const std::string& path) const;
    std::vector<RecordedRequest> requests() const;

private:
    void serve(QTcpSocket* socket);
    void respond(QTcpSocket* socket, const RecordedRequest& request);

    std::shared_ptr<core::EventLoopScheduler> thread_;
    std::unique_ptr<QTcpServer> server_;
    quint16 port_ = 0;
    mutable std::mutex mutex_;
    std::map<std::string, Route> routes_;
    std::vector<RecordedRequest> requests_;
};

} // namespace orvanta::testing
