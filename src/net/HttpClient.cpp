#include "net/HttpClient.h"

#include "net/ContentDecoder.h"
#include "net/TransferError.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string_view>
#include <optional>
#include <vector>

#include <unistd.h>

namespace orvanta::net {

namespace {

constexpr qint64 chunkSize = 256 * 1024;

core::Error tooLarge() {
    return TransferError::make(TransferErrorCode::dataLengthExceedsMaximum, "The resource exceeds the maximum size.");
}

// The hidden file a transfer writes into: ".download-XXXXXX.part" beside its destination.
constexpr std::string_view kPartPrefix = ".download-", kPartSuffix = ".part";

core::Error timedOut() { return TransferError::make(TransferErrorCode::timedOut, "The request timed out."); }

// One transfer in flight: the reply's body, decoded, streams into a hidden file. Lives on
// the client's worker thread.
struct Transfer {
    std::shared_ptr<QTemporaryFile> file;
    std::shared_ptr<core::Sink<DownloadedFile>> sink;
    TransferLimits limits;
    std::unique_ptr<ContentDecoder> decoder; // made when the first body bytes arrive
    std::vector<char> buffer = std::vector<char>(chunkSize);
    qint64 received = 0; // body bytes as they came over the wire
    qint64 written = 0;  // decoded bytes, in the file or pending
    std::vector<char> pending; // decoded bytes not written yet
    std::optional<core::Error> stop; // why the transfer ends early
    DownloadProgress::Handler onProgress;
    std::optional<qint64> declaredLength;

    // The answer's head: a declared length over the maximum ends the transfer at once.
    void headArrived(QNetworkReply& reply) {
        const QVariant declared = reply.header(QNetworkRequest::ContentLengthHeader);
        if (declared.isValid()) declaredLength = declared.toLongLong();
        if (declaredLength > limits.maximumBodySize) end(reply, tooLarge());
    }

    // Moves what the reply holds through the decoder into the file, ending the transfer
    // when the body grows too large, cannot be decoded or cannot be written.
    void drain(QNetworkReply& reply) {
        if (!decoder)
            decoder = std::make_unique<ContentDecoder>(reply.rawHeader("Content-Encoding"),
                                                       [this](const char* data, qint64 size) { return write(data, size); });
        const qint64 before = received;
        while (!stop && reply.bytesAvailable() > 0) {
            const qint64 n = reply.read(buffer.data(), chunkSize);
            if (n <= 0) break;
            received += n;
            if (received > limits.maximumBodySize) return end(reply, tooLarge());
            if (!decoder->feed(buffer.data(), n) && !stop) return end(reply, undecodable());
        }
        if (stop) return reply.abort();
        if (onProgress && received != before) onProgress(DownloadProgress{received, declaredLength});
    }

    // Appends decoded bytes to the file, gathering small pieces so that the disk sees few
    // large writes.
    bool write(const char* data, qint64 size) {
        if (written + size > limits.maximumBodySize) {
            stop = tooLarge();
            return false;
        }
        written += size;
        if (!pending.empty() && qint64(pending.size()) + size > chunkSize && !flush()) return false;
        if (size >= chunkSize) return writeOut(data, size);
        pending.insert(pending.end(), data, data + size);
        return true;
    }

    bool flush() {
        const bool ok = writeOut(pending.data(), qint64(pending.size()));
        pending.clear();
        return ok;
    }

    // The descriptor is written directly so that a failure keeps the system's reason (no
    // space left, and so on).
    bool writeOut(const char* data, qint64 size) {
        while (size > 0) {
            const ssize_t n = ::write(file->handle(), data, static_cast<std::size_t>(size));
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) {
                stop = core::Error("FileWriteError", errno,
                                   "Could not write " + file->fileName().toStdString() + ": " + std::strerror(errno));
                return false;
            }
            data += n;
            size -= n;
        }
        return true;
    }

    core::Error undecodable() const {
        return TransferError::make(TransferErrorCode::cannotDecodeRawData,
                                   "The body could not be decoded: " + decoder->error().toStdString());
    }

    void end(QNetworkReply& reply, core::Error reason) {
        if (!stop) stop = std::move(reason);
        reply.abort();
    }

    void finish(QNetworkReply& reply) {
        if (stop) return fail(*stop);
        const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        // An HTTP error status is still a completed transfer: the caller gets the body.
        if (reply.error() != QNetworkReply::NoError && !TransferError::reportsOnlyTheStatus(reply.error(), status)) {
            // The idle time-out aborts the reply; a cancel by the subscriber never gets
            // here because its sink drops everything.
            return fail(reply.error() == QNetworkReply::OperationCanceledError
                            ? timedOut()
                            : TransferError::fromReply(reply.error(), reply.errorString()));
        }
        drain(reply);
        if (stop) return fail(*stop);
        // A connection that closes early can end without an error; a body shorter than its
        // declared length is a broken transfer all the same.
        const QVariant declared = reply.header(QNetworkRequest::ContentLengthHeader);
        if (declared.isValid() && received < declared.toLongLong())
            return fail(TransferError::make(TransferErrorCode::networkConnectionLost, "The network connection was lost."));
        if (!decoder->finish()) return fail(undecodable());
        if (!flush()) return fail(*stop);
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

HttpClient::HttpClient(std::optional<TransferLimits> limits)
    : worker_(core::EventLoopScheduler::withWorkerThread("http-client")),
      manager_(std::make_unique<QNetworkAccessManager>()),
      limits_(limits) {
    // The manager must live on the thread that runs its transfers.
    manager_->moveToThread(worker_->thread());
}

HttpClient::~HttpClient() {
    // The manager must die on its own thread: a deferred delete is carried out there, at the
    // latest when the worker thread finishes.
    manager_.release()->deleteLater();
}

TransferLimits HttpClient::limits() const { return limits_ ? *limits_ : DownloadLimits::defaults(); }

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

int HttpClient::removeStalePartFiles(const std::string& directory) const {
    namespace fs = std::filesystem;
    const auto staleBefore = fs::file_time_type::clock::now() - limits().deadline;
    int removed = 0;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, error)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with(kPartPrefix) || !name.ends_with(kPartSuffix) || !entry.is_regular_file(error) ||
            entry.is_symlink(error))
            continue;
        const auto written = entry.last_write_time(error);
        if (!error && written < staleBefore && fs::remove(entry.path(), error)) ++removed;
    }
    return removed;
}

core::Publisher<DownloadedFile> HttpClient::download(const core::Url& url, const std::string& directory,
                                                     DownloadProgress::Handler onProgress) const {
    return core::Publisher<DownloadedFile>([this, url, directory, onProgress](const std::shared_ptr<core::Sink<DownloadedFile>>& sink) {
        start(url, directory, sink, onProgress);
    });
}

void HttpClient::start(const core::Url& url, const std::string& directory,
                       const std::shared_ptr<core::Sink<DownloadedFile>>& sink,
                       const DownloadProgress::Handler& onProgress) const {
    QNetworkAccessManager* manager = manager_.get();
    // The worker is captured weakly: a task must never hold the last reference to its own thread.
    worker_->async([manager, url, directory, sink, onProgress, limits = limits(), weakWorker = std::weak_ptr<core::EventLoopScheduler>(worker_)] {
        if (sink->token()->isCancelled()) return;
        auto transfer = std::make_shared<Transfer>();
        transfer->sink = sink;
        transfer->limits = limits;
        transfer->onProgress = onProgress;
        transfer->file = std::make_shared<QTemporaryFile>(QString::fromStdString(directory + "/" + std::string(kPartPrefix) + "XXXXXX" + std::string(kPartSuffix)));
        if (!transfer->file->open()) {
            sink->complete(core::Completion::failed(core::Error(
                "FileWriteError", static_cast<int>(transfer->file->error()),
                "Could not create a file in " + directory + ": " + transfer->file->errorString().toStdString())));
            return;
        }
        QNetworkRequest request(url.toQUrl());
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
        request.setTransferTimeout(static_cast<int>(limits.idleTimeout.count()));
        // Naming the accepted encodings keeps the HTTP stack from decoding bodies itself,
        // which it does without noticing a compressed stream cut short (see ContentDecoder).
        request.setRawHeader("Accept-Encoding", "gzip, deflate");
        QNetworkReply* reply = manager->get(request); // Qt ownership: deleted below with deleteLater
        QPointer<QNetworkReply> guard(reply);
        sink->token()->onCancel([weakWorker, guard] {
            if (auto worker = weakWorker.lock()) worker->async([guard] {
                if (guard) guard->abort();
            });
        });
        QTimer::singleShot(limits.deadline, reply, [reply, transfer] { transfer->end(*reply, timedOut()); });
        QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, [reply, transfer] { transfer->headArrived(*reply); });
        QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply, transfer] { transfer->drain(*reply); });
        QObject::connect(reply, &QNetworkReply::finished, reply, [reply, transfer] {
            reply->deleteLater();
            transfer->finish(*reply);
        });
    });
}

} // namespace orvanta::net
