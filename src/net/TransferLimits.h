#pragma once
// The bounds every transfer of an HttpClient runs within. A host may choose other values
// (see HttpClient::setDefaultLimits); the defaults suit model files.
// Thread: a value type.

#include <QtGlobal>

#include <chrono>

namespace orvanta::net {

struct TransferLimits {
    // A transfer that receives nothing for this long fails with timedOut.
    std::chrono::milliseconds idleTimeout = std::chrono::seconds(60);
    // A transfer still running after this long fails with timedOut, however steadily its
    // bytes arrive.
    std::chrono::milliseconds resourceTimeout = std::chrono::minutes(10);
    // A body longer than this, declared or received, fails with dataLengthExceedsMaximum.
    qint64 maximumBodySize = qint64(1) << 30;
};

} // namespace orvanta::net
