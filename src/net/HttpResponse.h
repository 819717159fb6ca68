#pragma once
// What one GET returned: the whole body and the status line's code (0 when the transfer
// had no HTTP status, e.g. a file URL). Callers decide whether to look at the status.
// Thread: a value type.

#include <QByteArray>

namespace orvanta::net {

struct HttpResponse {
    QByteArray body;
    int statusCode = 0;
};

} // namespace orvanta::net
