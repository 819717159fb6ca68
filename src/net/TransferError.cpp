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

core::Error TransferError::fromReply(QNetworkReply::NetworkError code, const QString& detail) {
    return make(codeFor(code), detail.toStdString());
}

core::Error TransferError::make(TransferErrorCode code, const std::string& message) {
    return core::Error(transferErrorDomain, static_cast<int>(code), message);
}

} // namespace orvanta::net
