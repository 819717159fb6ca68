#pragma once
// Where things are in a JSON text, for error messages that name a line: the line of every
// object member's key and of every array element that is an object or array, by path
// ("dishes/1/price" is the key "price" of the second element of "dishes"; indices from 0).
// Qt's JSON reader gives values but no positions, so the text is scanned once more for them.
// Thread: a value type.

#include <QByteArray>
#include <QString>

#include <map>

namespace orvanta::demo {

class JsonLines {
public:
    // Scans `text`, which must be well-formed JSON.
    explicit JsonLines(const QByteArray& text);

    // The line (from 1) of `path`; of its nearest recorded parent when it has none (a missing
    // member is reported at its object); 1 for the root.
    int lineOf(const QString& path) const;
    // The line (from 1) of byte `offset`, such as a parse error's.
    static int lineAt(const QByteArray& text, qsizetype offset);

private:
    std::map<QString, int> lines_;
};

} // namespace orvanta::demo
