#include "core/Url.h"

namespace orvanta::core {

std::optional<Url> Url::fromString(const std::string& text) {
    if (text.empty()) return std::nullopt;
    QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    if (!url.isValid()) return std::nullopt;
    return Url(url);
}

Url Url::fileUrl(const std::string& path) { return Url(QUrl::fromLocalFile(QString::fromStdString(path))); }

std::string Url::lastPathComponent() const {
    const QString path = url_.path(QUrl::FullyEncoded);
    if (path.isEmpty()) return {};
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith('/')) trimmed.chop(1);
    if (trimmed == "/") return "/";
    const QString encoded = trimmed.mid(trimmed.lastIndexOf('/') + 1);
    return QUrl::fromPercentEncoding(encoded.toUtf8()).toStdString();
}

std::string Url::path() const {
    if (isFileUrl()) return url_.toLocalFile().toStdString();
    return url_.path(QUrl::FullyDecoded).toStdString();
}

Url Url::appendingPathComponent(const std::string& component) const {
    QUrl result = url_;
    QString path = result.path(QUrl::FullyDecoded);
    if (!path.endsWith('/')) path += '/';
    result.setPath(path + QString::fromStdString(component), QUrl::DecodedMode);
    return Url(result);
}

} // namespace orvanta::core
