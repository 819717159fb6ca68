#pragma once
// Runs a command-line tool of the kit as a separate process and collects what it printed.

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace orvanta::testing {

struct ToolRun {
    int exitCode = -1;
    QString out;
    QString err;

    // Runs `program` with `arguments` in `environment` (the test's own unless given) and
    // waits (at most 120 s) for it to end; a crash fails the test.
    static ToolRun of(const QString& program, const QStringList& arguments,
                      const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    // The test's environment without a display: no X or Wayland display and no Qt platform named.
    static QProcessEnvironment withoutDisplay();
};

} // namespace orvanta::testing
