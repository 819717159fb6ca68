#include "net/TransferError.h"

#include <utility>

namespace orvanta::net {

namespace {

TransferErrorCode codeFor(QNetworkReply::NetworkError error) {
    switch (error) {
    case QNetworkReply::OperationCanceledError: return TransferErrorCode::cancelled;
    case QNetworkReply::TimeoutError: return TransferErrorCode::timedOut;
    case QNetworkReply::HostNotFoundError: return TransferErrorCode::cannotFindHost;
    case QNetworkReply::ConnectionRefusedError: return TransferErrorCode::cannotConnectToHost;
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::ProtocolFailure:
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError: return TransferErrorCode::networkConnectionLost;
    case QNetworkReply::TooManyRedirectsError:
    case QNetworkReply::InsecureRedirectError: return TransferErrorCode::tooManyRedirects;
    case QNetworkReply::SslHandshakeFailedError: return TransferErrorCode::secureConnectionFailed;
    case QNetworkReply::ProtocolUnknownError: return TransferErrorCode::unsupportedURL;
    case QNetworkReply::ProtocolInvalidOperationError: return TransferErrorCode::badURL;
    default: return TransferErrorCode::unknown;
    }
}

} // namespace

bool TransferError::reportsOnlyTheStatus(QNetworkReply::NetworkError code, int status) {
    // The statuses Qt names an error of its own for; other 4xx and 5xx share one each.
    static constexpr std::pair<int, QNetworkReply::NetworkError> named[] = {
        {400, QNetworkReply::ProtocolInvalidOperationError}, {401, QNetworkReply::AuthenticationRequiredError},
        {403, QNetworkReply::ContentAccessDenied},           {404, QNetworkReply::ContentNotFoundError},
        {405, QNetworkReply::ContentOperationNotPermittedError}, {407, QNetworkReply::ProxyAuthenticationRequiredError},
        {409, QNetworkReply::ContentConflictError},          {410, QNetworkReply::ContentGoneError},
        {418, QNetworkReply::ProtocolInvalidOperationError}, {500, QNetworkReply::InternalServerError},
        {501, QNetworkReply::OperationNotImplementedError},  {503, QNetworkReply::ServiceUnavailableError},
    };
    for (const auto& [namedStatus, error] : named)
        if (status == namedStatus) return code == error;
    if (status > 500) return code == QNetworkReply::UnknownServerError;
    return status >= 400 && code == QNetworkReply::UnknownContentError;
}

core::Error TransferError::fromReply(QNetworkReply::NetworkError code, const QString& detail) {
    return make(codeFor(code), detail.toStdString());
}

core::Error TransferError::make(TransferErrorCode code, const std::string& message) {
    return core::Error(transferErrorDomain, static_cast<int>(code), message);
}

} // namespace orvanta::net
