#include "net/HttpClient.h"

#include "net/TransferError.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

#include <mutex>

namespace orvanta::net {

namespace {
// A declared length beyond this is not trusted for pre-allocation; the body still streams in.
constexpr qint64 maxReservation = qint64(1) << 31;

// Qt reports a 4xx or 5xx answer as an error of these classes; the transfer itself worked.
bool isHttpStatusError(QNetworkReply::NetworkError error) {
    const int code = static_cast<int>(error);
    return (code >= 201 && code <= 299) || error == QNetworkReply::ProtocolInvalidOperationError ||
           (code >= 401 && code <= 499);
}
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

core::Publisher<HttpResponse> HttpClient::get(const core::Url& url) const {
    return core::Publisher<HttpResponse>(
        [this, url](const std::shared_ptr<core::Sink<HttpResponse>>& sink) { start(url, sink); });
}

void HttpClient::start(const core::Url& url, const std::shared_ptr<core::Sink<HttpResponse>>& sink) const {
    QNetworkAccessManager* manager = manager_.get();
    const int timeoutMs = static_cast<int>(timeout_.count());
    // The worker is captured weakly: a task must never hold the last reference to its own thread.
    worker_->async([manager, url, sink, timeoutMs, weakWorker = std::weak_ptr<core::EventLoopScheduler>(worker_)] {
        if (sink->token()->isCancelled()) return;
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
        // The body is drained as it arrives so the reply's own buffer stays small.
        auto body = std::make_shared<QByteArray>();
        QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, [reply, body] {
            const qint64 declared = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
            if (declared > 0 && declared < maxReservation && body->capacity() < declared)
                body->reserve(static_cast<qsizetype>(declared));
        });
        QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply, body] {
            const qint64 available = reply->bytesAvailable();
            if (available <= 0) return;
            const qsizetype old = body->size();
            body->resize(old + available);
            const qint64 got = reply->read(body->data() + old, available);
            body->resize(old + std::max<qint64>(got, 0));
        });
        QObject::connect(reply, &QNetworkReply::finished, reply, [reply, body, sink] {
            reply->deleteLater();
            const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
            // An HTTP error status is still a completed transfer: the caller gets the body.
            if (reply->error() != QNetworkReply::NoError && !(status > 0 && isHttpStatusError(reply->error()))) {
                // The transfer time-out aborts the reply; a cancel by the subscriber never
                // reaches here because its sink drops everything.
                const auto error = reply->error() == QNetworkReply::OperationCanceledError
                                       ? TransferError::make(TransferErrorCode::timedOut, "The request timed out.")
                                       : TransferError::fromReply(reply->error(), reply->errorString());
                sink->complete(core::Completion::failed(error));
                return;
            }
            const qint64 rest = reply->bytesAvailable();
            if (rest > 0) body->append(reply->read(rest));
            // A connection that closes early can end without an error; a body shorter than
            // its declared length is a broken transfer all the same.
            const QVariant declared = reply->header(QNetworkRequest::ContentLengthHeader);
            const bool compressed = !reply->rawHeader("Content-Encoding").isEmpty();
            if (declared.isValid() && !compressed && body->size() < declared.toLongLong()) {
                sink->complete(core::Completion::failed(
                    TransferError::make(TransferErrorCode::networkConnectionLost, "The network connection was lost.")));
                return;
            }
            HttpResponse response;
            response.statusCode = status;
            response.body = std::move(*body);
            sink->receive(std::move(response));
            sink->complete(core::Completion::finished());
        });
    });
}

} // namespace orvanta::net
