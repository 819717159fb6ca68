#pragma once
// A small HTTP/1.1 server on 127.0.0.1 that serves the files of one folder (the sample
// restaurant's models and pictures) and files added one by one under a name (the models of
// a menu file), so that the kit's real download and cache run against it. GET /<name>
// answers 200 with the file, its Content-Length and a content type from its extension;
// anything else answers 404 (no such file, or a name that would leave the folder) or 405
// (not GET). Every answer closes its connection.
//
// Two ways to watch the kit at work:
// - slow: each model file's body is sent in pieces spread over about three seconds, so a
//   download's progress can be followed (pictures still come at once);
// - failing: the body of one file is cut off halfway after announcing its whole length, and
//   the connection reset, which the kit's HTTP client reports as a lost connection
//   ("URLError" -1005) and its model loaders pass on.
//
// Runs on the event loop of the thread that made it (its sockets live there); nothing
// blocks and nothing polls.
// Thread: the thread that made it, for every method.

#include "core/Result.h"

#include <QObject>
#include <QString>

#include <map>
#include <memory>

class QTcpServer;
class QTcpSocket;

namespace orvanta::demo {

class LoopbackMenuServer : public QObject {
    Q_OBJECT

public:
    // In slow mode a model's body goes out in this many pieces, this far apart.
    static constexpr int slowPieces = 30;
    static constexpr int slowPieceIntervalMs = 100;

    // Serves the files of `folder`; an empty folder serves only the files added by name.
    explicit LoopbackMenuServer(QString folder, QObject* parent = nullptr);
    ~LoopbackMenuServer() override;

    // Starts listening on 127.0.0.1 at a port the system chooses; returns the base URL,
    // such as "http://127.0.0.1:41234" (a file's URL is the base URL, '/', its name).
    core::Result<QString> start();
    QString baseUrl() const;

    // Serves the file at `path` as /<name> (percent-encoded in the URL), before any file of
    // the folder with that name.
    void addFile(const QString& name, const QString& path) { added_.insert_or_assign(name, path); }

    void setSlow(bool slow) { slow_ = slow; }
    // The file whose body is cut off; an empty name fails nothing.
    void setFailing(QString fileName) { failing_ = std::move(fileName); }

    static QByteArray contentType(const QString& fileName);

private:
    void serve(QTcpSocket* socket);
    void respond(QTcpSocket* socket, const QByteArray& head);
    // The file served as /<name>, or an empty path when there is none.
    QString pathOf(const QString& name) const;

    QString folder_;
    std::map<QString, QString> added_; // name -> path
    std::unique_ptr<QTcpServer> server_;
    bool slow_ = false;
    QString failing_;
};

} // namespace orvanta::demo
