#pragma once
// Runs a command-line tool of the kit as a separate process and collects what it printed.

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <gtest/gtest.h>

namespace orvanta::testing {

struct ToolRun {
    int exitCode = -1;
    QString out;
    QString err;

    // Runs `program` with `arguments` in `environment` (the test's own unless given) and
    // waits (at most 120 s) for it to end; a crash fails the test.
    static ToolRun of(const QString& program, const QStringList& arguments,
                      const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished(120000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << "exit code " << process.exitCode();
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }
    // The test's environment without a display: no X or Wayland display and no Qt platform named.
    static QProcessEnvironment withoutDisplay() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) environment.remove(name);
        return environment;
    }
};

} // namespace orvanta::testing
