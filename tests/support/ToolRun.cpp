#include "support/ToolRun.h"

#include <gtest/gtest.h>

#include <QProcess>

namespace orvanta::testing {

ToolRun ToolRun::of(const QString& program, const QStringList& arguments, const QProcessEnvironment& environment) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(120000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << "exit code " << process.exitCode();
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

QProcessEnvironment ToolRun::withoutDisplay() {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) environment.remove(name);
    return environment;
}

} // namespace orvanta::testing
