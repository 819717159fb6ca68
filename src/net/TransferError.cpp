#include "net/TransferError.h"

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
    switch (status) {
    case 400: return code == QNetworkReply::ProtocolInvalidOperationError;
    case 401: return code == QNetworkReply::AuthenticationRequiredError;
    case 403: return code == QNetworkReply::ContentAccessDenied;
    case 404: return code == QNetworkReply::ContentNotFoundError;
    case 405: return code == QNetworkReply::ContentOperationNotPermittedError;
    case 407: return code == QNetworkReply::ProxyAuthenticationRequiredError;
    case 409: return code == QNetworkReply::ContentConflictError;
    case 410: return code == QNetworkReply::ContentGoneError;
    case 418: return code == QNetworkReply::ProtocolInvalidOperationError;
    case 500: return code == QNetworkReply::InternalServerError;
    case 501: return code == QNetworkReply::OperationNotImplementedError;
    case 503: return code == QNetworkReply::ServiceUnavailableError;
    default:
        if (status > 500) return code == QNetworkReply::UnknownServerError;
        return status >= 400 && code == QNetworkReply::UnknownContentError;
    }
}

core::Error TransferError::fromReply(QNetworkReply::NetworkError code, const QString& detail) {
    return make(codeFor(code), detail.toStdString());
}

core::Error TransferError::make(TransferErrorCode code, const std::string& message) {
    return core::Error(transferErrorDomain, static_cast<int>(code), message);
}

} // namespace orvanta::net
