#include "support/TestHttpServer.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <functional>
#include <future>

namespace orvanta::testing {

namespace {

constexpr qsizetype chunk = 256 * 1024;

std::string pathWithoutQuery(const std::string& path) { return path.substr(0, path.find('?')); }

QByteArray head(const Route& route) {
    const bool redirect = !route.redirectTo.empty();
    QByteArray head = "HTTP/1.1 " + QByteArray::number(redirect ? 302 : route.status) + " X\r\n";
    if (redirect) head += "Location: " + QByteArray::fromStdString(route.redirectTo) + "\r\n";
    head += "Content-Type: " + route.contentType + "\r\n";
    if (route.length != Route::Length::none)
        head += "Content-Length: " + QByteArray::number(route.length == Route::Length::actual ? route.body.size() : route.declaredLength) + "\r\n";
    for (const QByteArray& line : route.headers) head += line + "\r\n";
    return head + "Connection: close\r\n\r\n";
}

// The endless part of a flooding head, one piece at a time.
QByteArray floodPiece(Route::Flood flood, bool first) {
    if (flood == Route::Flood::headerLines) return QByteArray("X-Flood: 0123456789abcdef\r\n").repeated(4096);
    return (first ? QByteArray("X-Flood: ") : QByteArray()) + QByteArray(chunk, 'a');
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

qint64 TestHttpServer::bytesSent(const std::string& path) const {
    std::lock_guard lock(mutex_);
    return sent_.contains(path) ? sent_.at(path) : 0;
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

void TestHttpServer::send(QTcpSocket* socket, const std::string& path, const QByteArray& bytes) {
    socket->write(bytes);
    std::lock_guard lock(mutex_);
    sent_[path] += bytes.size();
}

void TestHttpServer::respond(QTcpSocket* socket, const RecordedRequest& request) {
    const std::string path = pathWithoutQuery(request.path);
    Route route{.status = 404, .body = "<html><body>Not Found</body></html>", .contentType = "text/html"};
    {
        std::lock_guard lock(mutex_);
        if (const auto it = routes_.find(path); it != routes_.end()) route = it->second;
    }
    auto answer = [this, socket, path, route] {
        send(socket, path, route.flood != Route::Flood::none ? QByteArray("HTTP/1.1 200 OK\r\n") : head(route));
        // The next piece to send, empty once everything is out; it is sent as the socket
        // drains, so nothing large ever sits in the socket's buffer.
        auto offset = std::make_shared<qint64>(0);
        const qsizetype limit = route.cutAfter >= 0 ? std::min(route.cutAfter, route.body.size()) : route.body.size();
        std::function<QByteArray()> next = [route, offset, limit] {
            if (route.flood != Route::Flood::none) {
                if (*offset >= floodLimit) return QByteArray();
                QByteArray piece = floodPiece(route.flood, *offset == 0);
                *offset += piece.size();
                return piece;
            }
            const qsizetype n = std::min<qsizetype>(route.dripIntervalMs > 0 ? 1 : chunk, limit - *offset);
            QByteArray piece = route.body.mid(*offset, n);
            *offset += n;
            return piece;
        };
        auto finished = std::make_shared<bool>(false);
        auto pump = [this, socket, path, next, finished, cut = route.cutAfter >= 0](bool onePiece) {
            while (!*finished && socket->bytesToWrite() < 4 * chunk) {
                const QByteArray piece = next();
                if (piece.isEmpty()) *finished = true;
                else send(socket, path, piece);
                if (onePiece) break;
            }
            if (*finished && socket->bytesToWrite() == 0) {
                if (cut) socket->abort();
                else socket->disconnectFromHost();
            }
        };
        if (route.dripIntervalMs > 0) {
            auto* timer = new QTimer(socket); // Qt ownership: dies with the socket
            QObject::connect(timer, &QTimer::timeout, socket, [pump] { pump(true); });
            QObject::connect(socket, &QTcpSocket::bytesWritten, socket, [pump, finished] {
                if (*finished) pump(true);
            });
            timer->start(route.dripIntervalMs);
            return;
        }
        QObject::connect(socket, &QTcpSocket::bytesWritten, socket, [pump] { pump(false); });
        pump(false);
    };
    if (route.delayMs > 0) QTimer::singleShot(route.delayMs, socket, answer);
    else answer();
}

} // namespace orvanta::testing
