#pragma once
// How far a download has got: body bytes received over the wire, of the length the server
// declared (none when it declared none).

#include <QtGlobal>

#include <functional>
#include <optional>

namespace orvanta::net {

struct DownloadProgress {
    qint64 received = 0;
    std::optional<qint64> expected;

    // Told as body bytes arrive, on the HTTP client's worker thread.
    using Handler = std::function<void(const DownloadProgress&)>;
};

} // namespace orvanta::net
