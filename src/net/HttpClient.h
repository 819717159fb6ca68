#pragma once
// Plain HTTP(S) GETs of whole bodies, run on the client's own worker thread and streamed
// to disk as they arrive, within the client's TransferLimits. The only header the kit sets
// is Accept-Encoding, naming the encodings it decodes (no credentials, nothing of its own),
// and the response status is handed over, never judged.
// Thread: download() from any thread; delivery happens on the client's worker thread.

#include "core/EventLoopScheduler.h"
#include "core/Publisher.h"
#include "core/Url.h"
#include "net/DownloadProgress.h"
#include "net/DownloadedFile.h"
#include "net/TransferLimits.h"

#include <memory>
#include <optional>

class QNetworkAccessManager;

namespace orvanta::net {

class HttpClient {
public:
    // `limits`: this client's own; without them every transfer uses the default limits as
    // they are when it starts (DownloadLimits::defaults()).
    explicit HttpClient(std::optional<TransferLimits> limits = std::nullopt);
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    // The process-wide client (made on first use), which uses the default limits.
    static std::shared_ptr<HttpClient> shared();
    TransferLimits limits() const;

    // A cold stream: each subscription makes one GET, writes the body (decoded when it came
    // compressed) to a new hidden file in `directory` and publishes it once; or fails with a
    // "URLError" error (transfer: cut short, undecodable, over the maximum size or past a
    // time-out) or a "FileWriteError" error (disk), leaving no file. Cancelling aborts the
    // transfer. `onProgress`, when given, is told on the worker thread as body bytes arrive.
    core::Publisher<DownloadedFile> download(const core::Url& url, const std::string& directory,
                                             DownloadProgress::Handler onProgress = {}) const;

    // Removes the hidden part files that transfers left in `directory` when their process
    // ended in the middle of them: those last written longer ago than this client's deadline
    // (a running transfer writes more recently, or has failed by then). Nothing else there is
    // touched. Returns how many went. Thread: any.
    int removeStalePartFiles(const std::string& directory) const;

    // The worker thread's queue (where results are delivered).
    const std::shared_ptr<core::EventLoopScheduler>& queue() const { return worker_; }

private:
    void start(const core::Url& url, const std::string& directory,
               const std::shared_ptr<core::Sink<DownloadedFile>>& sink, const DownloadProgress::Handler& onProgress) const;

    std::shared_ptr<core::EventLoopScheduler> worker_;
    std::unique_ptr<QNetworkAccessManager> manager_; // lives on the worker thread
    std::optional<TransferLimits> limits_;
};

} // namespace orvanta::net
