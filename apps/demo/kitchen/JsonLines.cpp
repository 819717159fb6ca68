#include "JsonLines.h"

#include <vector>

namespace orvanta::demo {

namespace {

struct Container {
    QString path;
    bool isObject = false;
    bool expectingKey = false; // objects: the next string is a member's key
    QString key;               // objects: the member being read
    int index = 0;             // arrays: the element being read
    QString childPath() const { return path + '/' + (isObject ? key : QString::number(index)); }
};

} // namespace

JsonLines::JsonLines(const QByteArray& text) {
    std::vector<Container> open;
    int line = 1;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char c = text[i];
        switch (c) {
        case '\n':
            ++line;
            break;
        case '"': {
            const qsizetype start = i + 1;
            for (++i; i < text.size() && text[i] != '"'; ++i)
                if (text[i] == '\\') ++i;
            if (!open.empty() && open.back().isObject && open.back().expectingKey) {
                Container& object = open.back();
                object.key = QString::fromUtf8(text.mid(start, i - start));
                object.expectingKey = false;
                lines_[object.childPath()] = line;
            }
            break;
        }
        case '{':
        case '[': {
            const QString path = open.empty() ? QString() : open.back().childPath();
            if (!open.empty() && !open.back().isObject) lines_[path] = line;
            open.push_back(Container{path, c == '{', c == '{', {}, 0});
            break;
        }
        case '}':
        case ']':
            if (!open.empty()) open.pop_back();
            break;
        case ',':
            if (!open.empty()) {
                if (open.back().isObject) open.back().expectingKey = true;
                else ++open.back().index;
            }
            break;
        default:
            break;
        }
    }
}

int JsonLines::lineOf(const QString& path) const {
    for (QString p = path; !p.isEmpty(); p.truncate(p.lastIndexOf('/'))) {
        const auto found = lines_.find(p);
        if (found != lines_.end()) return found->second;
    }
    return 1;
}

int JsonLines::lineAt(const QByteArray& text, qsizetype offset) {
    return 1 + int(text.left(offset).count('\n'));
}

} // namespace orvanta::demo
