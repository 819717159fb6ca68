#pragma once
// A URL with the semantics the kit relies on: parsing that rejects empty and malformed
// text, the decoded last path component without query or fragment, file URLs and paths.
// Thread: a value type.

#include <QUrl>

#include <optional>
#include <string>

namespace orvanta::core {

class Url {
public:
    // Absent for an empty string or text that is not a valid URL (absolute or relative).
    static std::optional<Url> fromString(const std::string& text);
    // The file URL of an absolute file-system path.
    static Url fileUrl(const std::string& path);

    // The last segment of the path, percent-decoded; "/" for a path that is only "/", and
    // empty when there is no path. Query and fragment never take part.
    std::string lastPathComponent() const;
    // The path, percent-decoded (for a file URL, the file-system path).
    std::string path() const;
    bool isFileUrl() const { return url_.isLocalFile(); }
    // This URL with `component` added as one more path segment.
    Url appendingPathComponent(const std::string& component) const;
    std::string toString() const { return url_.toString(QUrl::FullyEncoded).toStdString(); }
    const QUrl& toQUrl() const { return url_; }

    friend bool operator==(const Url& a, const Url& b) { return a.url_ == b.url_; }

private:
    explicit Url(QUrl url) : url_(std::move(url)) {}
    QUrl url_;
};

} // namespace orvanta::core
