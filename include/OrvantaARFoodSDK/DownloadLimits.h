#pragma once
// The bounds every model download of the kit runs within. The defaults suit model files: a
// body of at most 1 GiB, nothing received for 60 s at most, 10 minutes in all. A host that
// serves larger models, or wants failures sooner, sets other defaults before the downloads
// it means them for:
//
//     orvanta::DownloadLimits::setDefaults({.idleTimeout = std::chrono::seconds(20),
//                                           .maximumBodySize = qint64(2) << 30});
//
// Thread: a value type; setDefaults() and defaults() from any thread.

#include <QtGlobal>

#include <chrono>

namespace orvanta {

struct DownloadLimits {
    // A download that receives nothing for this long fails as timed out.
    std::chrono::milliseconds idleTimeout = std::chrono::seconds(60);
    // A download still running this long after it started fails as timed out, however
    // steadily its bytes arrive.
    std::chrono::milliseconds deadline = std::chrono::minutes(10);
    // A body longer than this, declared or received, fails as too large.
    qint64 maximumBodySize = qint64(1) << 30;

    // The limits of every download started from now on; running ones keep theirs.
    static void setDefaults(const DownloadLimits& limits);
    static DownloadLimits defaults();
};

} // namespace orvanta
