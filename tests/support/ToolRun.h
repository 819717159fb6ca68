#pragma once
// Runs a command-line tool of the kit as a separate process and collects what it printed.

#include <QString>
#include <QStringList>

namespace orvanta::testing {

struct ToolRun {
    int exitCode = -1;
    QString out;
    QString err;

    // Runs `program` with `arguments` and waits (at most 60 s) for it to end.
    static ToolRun of(const QString& program, const QStringList& arguments);
};

} // namespace orvanta::testing
