#include "LoopbackMenuServer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <optional>

namespace orvanta::demo {

namespace {

// A request head that grows past this without ending is answered from its first line
// rather than read on.
constexpr qsizetype maxRequestHead = 16 * 1024;

bool isModel(const QString& fileName) {
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    return suffix == "usdz" || suffix == "usda" || suffix == "usdc" || suffix == "glb" || suffix == "gltf";
}

QByteArray head(int status, const char* reason, const QByteArray& contentType, qint64 length) {
    return "HTTP/1.1 " + QByteArray::number(status) + ' ' + reason + "\r\nContent-Type: " + contentType +
           "\r\nContent-Length: " + QByteArray::number(length) + "\r\nConnection: close\r\n\r\n";
}

// One answer on its way out: the bytes, how far they go before the connection ends, and the
// pace. Each piece is written once the one before it has left the socket's buffer.
struct Answer {
    QByteArray bytes;
    qsizetype end = 0;          // bytes.size(), or less when the body is cut off
    qsizetype pieceSize = 0;    // 0: everything at once
    int pauseMs = 0;            // between pieces
    qsizetype sent = 0;
};

void sendNext(QTcpSocket* socket, const std::shared_ptr<Answer>& answer) {
    if (answer->sent >= answer->end) {
        if (answer->end < answer->bytes.size()) socket->abort(); // the cut: a reset, not a close
        else socket->disconnectFromHost();
        return;
    }
    const qsizetype size = answer->pieceSize > 0 ? answer->pieceSize : answer->end;
    const qsizetype piece = std::min(size, answer->end - answer->sent);
    socket->write(answer->bytes.constData() + answer->sent, piece);
    answer->sent += piece;
}

} // namespace

LoopbackMenuServer::LoopbackMenuServer(QString folder, QObject* parent)
    : QObject(parent), folder_(std::move(folder)), server_(std::make_unique<QTcpServer>()) {
    connect(server_.get(), &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = server_->nextPendingConnection()) serve(socket);
    });
}

LoopbackMenuServer::~LoopbackMenuServer() = default;

core::Result<QString> LoopbackMenuServer::start() {
    if (!server_->isListening() && !server_->listen(QHostAddress::LocalHost, 0))
        return core::Error("LoopbackMenuServerError", 1, "cannot listen on 127.0.0.1: " + server_->errorString().toStdString());
    return baseUrl();
}

QString LoopbackMenuServer::baseUrl() const {
    return QStringLiteral("http://127.0.0.1:%1").arg(server_->serverPort());
}

QByteArray LoopbackMenuServer::contentType(const QString& fileName) {
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix == "usdz") return "model/vnd.usdz+zip";
    if (suffix == "glb") return "model/gltf-binary";
    if (suffix == "gltf") return "model/gltf+json";
    if (suffix == "png") return "image/png";
    if (suffix == "jpg" || suffix == "jpeg") return "image/jpeg";
    if (suffix == "json") return "application/json";
    return "application/octet-stream";
}

void LoopbackMenuServer::serve(QTcpSocket* socket) {
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    // The request head as it arrives; once answered, whatever else comes is ignored.
    auto request = std::make_shared<std::optional<QByteArray>>(QByteArray());
    connect(socket, &QTcpSocket::readyRead, socket, [this, socket, request] {
        if (!*request) {
            socket->readAll();
            return;
        }
        QByteArray& received = **request;
        received.append(socket->readAll());
        if (!received.contains("\r\n\r\n") && received.size() < maxRequestHead) return;
        const QByteArray line = received.left(received.indexOf("\r\n"));
        request->reset();
        respond(socket, line);
    });
}

QString LoopbackMenuServer::pathOf(const QString& name) const {
    if (const auto added = added_.find(name); added != added_.end()) return added->second;
    const bool plainName = !name.isEmpty() && !name.contains('/') && !name.startsWith('.');
    return plainName && !folder_.isEmpty() ? QDir(folder_).filePath(name) : QString();
}

void LoopbackMenuServer::respond(QTcpSocket* socket, const QByteArray& requestLine) {
    auto answer = std::make_shared<Answer>();
    const QList<QByteArray> parts = requestLine.split(' ');
    const QString target = parts.size() >= 2 ? QUrl::fromPercentEncoding(parts[1].split('?').first()) : QString();
    const QString name = target.startsWith('/') ? target.mid(1) : QString();
    QFile file(pathOf(name));

    if (parts.size() < 3 || parts[0] != "GET") {
        answer->bytes = head(405, "Method Not Allowed", "text/plain", 0);
    } else if (file.fileName().isEmpty() || !file.open(QIODevice::ReadOnly)) {
        const QByteArray body = "no such file\n";
        answer->bytes = head(404, "Not Found", "text/plain", body.size()) + body;
    } else {
        const QByteArray body = file.readAll();
        const QByteArray top = head(200, "OK", contentType(name), body.size());
        answer->bytes = top + body;
        if (name == failing_) answer->end = top.size() + body.size() / 2;
        if (slow_ && isModel(name)) {
            answer->pieceSize = std::max<qsizetype>(body.size() / slowPieces, 1024);
            answer->pauseMs = slowPieceIntervalMs;
        }
    }
    if (answer->end == 0) answer->end = answer->bytes.size();

    connect(socket, &QTcpSocket::bytesWritten, socket, [socket, answer] {
        if (socket->bytesToWrite() > 0) return;
        if (answer->pauseMs > 0 && answer->sent < answer->end)
            QTimer::singleShot(answer->pauseMs, socket, [socket, answer] { sendNext(socket, answer); });
        else
            sendNext(socket, answer);
    });
    sendNext(socket, answer);
}

} // namespace orvanta::demo
