#include "net/HttpClient.h"

#include "net/TransferError.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

#include <mutex>
#include <optional>
#include <vector>

namespace orvanta::net {

namespace {

constexpr qint64 chunkSize = 256 * 1024;

// Qt reports a 4xx or 5xx answer as an error of these classes; the transfer itself worked.
bool isHttpStatusError(QNetworkReply::NetworkError error) {
    const int code = static_cast<int>(error);
    return (code >= 201 && code <= 299) || error == QNetworkReply::ProtocolInvalidOperationError ||
           (code >= 401 && code <= 499);
}

// One transfer in flight: the reply and the file its body streams into.
struct Transfer {
    std::shared_ptr<QTemporaryFile> file;
    std::shared_ptr<core::Sink<DownloadedFile>> sink;
    std::vector<char> buffer = std::vector<char>(chunkSize);
    qint64 written = 0;
    std::optional<core::Error> writeError;

    // Moves what the reply holds into the file; false once the disk refused.
    bool drain(QNetworkReply& reply) {
        while (!writeError && reply.bytesAvailable() > 0) {
            const qint64 n = reply.read(buffer.data(), chunkSize);
            if (n <= 0) break;
            if (file->write(buffer.data(), n) != n) {
                writeError = core::Error("FileWriteError", static_cast<int>(file->error()),
                                         "Could not write " + file->fileName().toStdString() + ": " +
                                             file->errorString().toStdString());
            }
            written += n;
        }
        return !writeError;
    }

    void finish(QNetworkReply& reply) {
        const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        // An HTTP error status is still a completed transfer: the caller gets the body.
        if (reply.error() != QNetworkReply::NoError && !(status > 0 && isHttpStatusError(reply.error()))) {
            // The transfer time-out aborts the reply; a cancel by the subscriber never gets
            // here because its sink drops everything.
            return fail(reply.error() == QNetworkReply::OperationCanceledError
                            ? TransferError::make(TransferErrorCode::timedOut, "The request timed out.")
                            : TransferError::fromReply(reply.error(), reply.errorString()));
        }
        if (!drain(reply) || !file->flush()) return fail(writeError.value_or(core::Error("FileWriteError", 0, "Could not flush the download")));
        // A connection that closes early can end without an error; a body shorter than its
        // declared length is a broken transfer all the same.
        const QVariant declared = reply.header(QNetworkRequest::ContentLengthHeader);
        const bool compressed = !reply.rawHeader("Content-Encoding").isEmpty();
        if (declared.isValid() && !compressed && written < declared.toLongLong())
            return fail(TransferError::make(TransferErrorCode::networkConnectionLost, "The network connection was lost."));
        file->close();
        sink->receive(DownloadedFile{file, status, written});
        sink->complete(core::Completion::finished());
    }

    void fail(const core::Error& error) {
        file->remove();
        sink->complete(core::Completion::failed(error));
    }
};

} // namespace

HttpClient::HttpClient(std::chrono::milliseconds transferTimeout)
    : worker_(core::EventLoopScheduler::withWorkerThread("http-client")),
      manager_(std::make_unique<QNetworkAccessManager>()),
      timeout_(transferTimeout) {
    // The manager must live on the thread that runs its transfers.
    manager_->moveToThread(worker_->thread());
}

HttpClient::~HttpClient() {
    // The manager must die on its own thread: a deferred delete is carried out there, at the
    // latest when the worker thread finishes.
    manager_.release()->deleteLater();
}

std::shared_ptr<HttpClient> HttpClient::shared() {
    static std::mutex mutex;
    static std::weak_ptr<HttpClient> instance;
    std::lock_guard lock(mutex);
    auto client = instance.lock();
    if (!client) {
        client = std::make_shared<HttpClient>();
        instance = client;
    }
    return client;
}

core::Publisher<DownloadedFile> HttpClient::download(const core::Url& url, const std::string& directory) const {
    return core::Publisher<DownloadedFile>(
        [this, url, directory](const std::shared_ptr<core::Sink<DownloadedFile>>& sink) { start(url, directory, sink); });
}

void HttpClient::start(const core::Url& url, const std::string& directory,
                       const std::shared_ptr<core::Sink<DownloadedFile>>& sink) const {
    QNetworkAccessManager* manager = manager_.get();
    const int timeoutMs = static_cast<int>(timeout_.count());
    // The worker is captured weakly: a task must never hold the last reference to its own thread.
    worker_->async([manager, url, directory, sink, timeoutMs, weakWorker = std::weak_ptr<core::EventLoopScheduler>(worker_)] {
        if (sink->token()->isCancelled()) return;
        auto transfer = std::make_shared<Transfer>();
        transfer->sink = sink;
        transfer->file = std::make_shared<QTemporaryFile>(QString::fromStdString(directory + "/.download-XXXXXX.part"));
        if (!transfer->file->open()) {
            sink->complete(core::Completion::failed(core::Error(
                "FileWriteError", static_cast<int>(transfer->file->error()),
                "Could not create a file in " + directory + ": " + transfer->file->errorString().toStdString())));
            return;
        }
        QNetworkRequest request(url.toQUrl());
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
        request.setTransferTimeout(timeoutMs);
        QNetworkReply* reply = manager->get(request); // Qt ownership: deleted below with deleteLater
        QPointer<QNetworkReply> guard(reply);
        sink->token()->onCancel([weakWorker, guard] {
            if (auto worker = weakWorker.lock()) worker->async([guard] {
                if (guard) guard->abort();
            });
        });
        QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply, transfer] {
            if (!transfer->drain(*reply)) reply->abort();
        });
        QObject::connect(reply, &QNetworkReply::finished, reply, [reply, transfer] {
            reply->deleteLater();
            if (transfer->writeError) return transfer->fail(*transfer->writeError);
            transfer->finish(*reply);
        });
    });
}

} // namespace orvanta::net
