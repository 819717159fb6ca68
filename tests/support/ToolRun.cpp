#include "support/ToolRun.h"

#include <gtest/gtest.h>

#include <QProcess>

namespace orvanta::testing {

ToolRun ToolRun::of(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

} // namespace orvanta::testing
