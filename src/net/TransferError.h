#pragma once
// Errors of a failed transfer, in the "URLError" domain with the conventional negative
// codes, so a log line says what went wrong in the usual words.
// Thread: any.

#include "core/Error.h"

#include <QNetworkReply>

namespace orvanta::net {

enum class TransferErrorCode {
    unknown = -1,
    cancelled = -999,
    badURL = -1000,
    timedOut = -1001,
    unsupportedURL = -1002,
    cannotFindHost = -1003,
    cannotConnectToHost = -1004,
    networkConnectionLost = -1005,
    tooManyRedirects = -1007,
    secureConnectionFailed = -1200,
    cannotDecodeRawData = -1015,
    dataLengthExceedsMaximum = -1103,
};

inline constexpr const char* transferErrorDomain = "URLError";

class TransferError {
public:
    // The error for a reply that ended with `code`; `detail` is Qt's own explanation.
    static core::Error fromReply(QNetworkReply::NetworkError code, const QString& detail);
    // True when Qt's `code` for an answer with HTTP `status` only reports that status (Qt
    // turns 4xx and 5xx answers into errors of its own): the transfer itself completed.
    static bool reportsOnlyTheStatus(QNetworkReply::NetworkError code, int status);
    static core::Error make(TransferErrorCode code, const std::string& message);
};

} // namespace orvanta::net
