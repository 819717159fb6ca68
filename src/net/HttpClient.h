#pragma once
// Plain HTTP(S) GETs of whole bodies, run on the client's own worker thread. Nothing is
// added to a request (no headers of the kit's, no credentials), and the response status is
// handed over, never judged.
// Thread: get() from any thread; delivery happens on the client's worker thread.

#include "core/EventLoopScheduler.h"
#include "core/Publisher.h"
#include "core/Url.h"
#include "net/HttpResponse.h"

#include <chrono>
#include <memory>

class QNetworkAccessManager;

namespace orvanta::net {

class HttpClient {
public:
    // `transferTimeout`: a transfer that receives nothing for this long fails with timedOut.
    explicit HttpClient(std::chrono::milliseconds transferTimeout = std::chrono::seconds(60));
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    // The process-wide client (made on first use).
    static std::shared_ptr<HttpClient> shared();

    // A cold stream: each subscription makes one GET and publishes the response once, or
    // fails with a "URLError" error. Cancelling the subscription aborts the transfer.
    core::Publisher<HttpResponse> get(const core::Url& url) const;

    // The worker thread's queue (where results are delivered).
    const std::shared_ptr<core::EventLoopScheduler>& queue() const { return worker_; }

private:
    void start(const core::Url& url, const std::shared_ptr<core::Sink<HttpResponse>>& sink) const;

    std::shared_ptr<core::EventLoopScheduler> worker_;
    std::unique_ptr<QNetworkAccessManager> manager_; // lives on the worker thread
    std::chrono::milliseconds timeout_;
};

} // namespace orvanta::net
