#include "support/TestHttpServer.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <future>

namespace orvanta::testing {

namespace {

std::string pathWithoutQuery(const std::string& path) { return path.substr(0, path.find('?')); }

// Sends `body` in chunks as the socket drains, so a large body is never copied whole into
// the socket's buffer.
void sendBody(QTcpSocket* socket, const QByteArray& body, qsizetype limit, bool closeAfter) {
    auto offset = std::make_shared<qsizetype>(0);
    auto pump = std::make_shared<std::function<void()>>();
    *pump = [socket, body, limit, closeAfter, offset] {
        constexpr qsizetype chunk = 256 * 1024;
        while (*offset < limit && socket->bytesToWrite() < 4 * chunk) {
            const qsizetype n = std::min(chunk, limit - *offset);
            socket->write(body.constData() + *offset, n);
            *offset += n;
        }
        if (*offset >= limit && socket->bytesToWrite() == 0) {
            if (closeAfter) socket->abort(); else socket->disconnectFromHost();
        }
    };
    QObject::connect(socket, &QTcpSocket::bytesWritten, socket, [pump] { (*pump)(); });
    (*pump)();
}

} // namespace

TestHttpServer::TestHttpServer() : thread_(core::EventLoopScheduler::withWorkerThread("test-http-server")) {
    std::promise<quint16> ready;
    thread_->async([this, &ready] {
        server_ = std::make_unique<QTcpServer>();
        QObject::connect(server_.get(), &QTcpServer::newConnection, server_.get(), [this] {
            while (QTcpSocket* socket = server_->nextPendingConnection()) serve(socket);
        });
        server_->listen(QHostAddress::LocalHost, 0);
        ready.set_value(server_->serverPort());
    });
    port_ = ready.get_future().get();
}

TestHttpServer::~TestHttpServer() {
    std::promise<void> done;
    thread_->async([this, &done] {
        server_.reset();
        done.set_value();
    });
    done.get_future().wait();
}

void TestHttpServer::route(const std::string& path, Route route) {
    std::lock_guard lock(mutex_);
    routes_[path] = std::move(route);
}

std::string TestHttpServer::baseUrl() const { return "http://127.0.0.1:" + std::to_string(port_); }

int TestHttpServer::requestCount() const {
    std::lock_guard lock(mutex_);
    return static_cast<int>(requests_.size());
}

int TestHttpServer::requestCount(const std::string& path) const {
    std::lock_guard lock(mutex_);
    int n = 0;
    for (const auto& r : requests_) n += pathWithoutQuery(r.path) == path;
    return n;
}

std::vector<RecordedRequest> TestHttpServer::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

void TestHttpServer::serve(QTcpSocket* socket) {
    QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    auto head = std::make_shared<QByteArray>();
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, head] {
        if (head->endsWith("\r\n\r\n")) return; // already answering
        head->append(socket->readAll());
        const qsizetype end = head->indexOf("\r\n\r\n");
        if (end < 0) return;
        head->truncate(end + 4);
        const QList<QByteArray> lines = head->left(end).split('\n');
        RecordedRequest request;
        const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
        request.path = requestLine.value(1).toStdString();
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const qsizetype colon = lines[i].indexOf(':');
            if (colon > 0)
                request.headers[lines[i].left(colon).trimmed().toLower().toStdString()] =
                    lines[i].mid(colon + 1).trimmed().toStdString();
        }
        {
            std::lock_guard lock(mutex_);
            requests_.push_back(request);
        }
        respond(socket, request);
    });
}

void TestHttpServer::respond(QTcpSocket* socket, const RecordedRequest& request) {
    Route route;
    bool known;
    {
        std::lock_guard lock(mutex_);
        auto it = routes_.find(pathWithoutQuery(request.path));
        known = it != routes_.end();
        if (known) route = it->second;
    }
    if (!known) {
        route.status = 404;
        route.body = "<html><body>Not Found</body></html>";
        route.contentType = "text/html";
    }
    auto send = [socket, route] {
        QByteArray header = "HTTP/1.1 " + QByteArray::number(route.redirectTo.empty() ? route.status : 302) + " X\r\n";
        if (!route.redirectTo.empty()) header += "Location: " + QByteArray::fromStdString(route.redirectTo) + "\r\n";
        header += "Content-Type: " + route.contentType + "\r\n";
        header += "Content-Length: " + QByteArray::number(route.body.size()) + "\r\nConnection: close\r\n\r\n";
        socket->write(header);
        const qsizetype limit = route.closeMidBody ? route.body.size() / 2 : route.body.size();
        sendBody(socket, route.body, limit, route.closeMidBody);
    };
    if (route.delayMs > 0) QTimer::singleShot(route.delayMs, socket, send);
    else send();
}

} // namespace orvanta::testing
