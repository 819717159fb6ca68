#pragma once
// Points TMPDIR (where the kit caches downloaded models) at a folder for the lifetime of
// this object, then puts back what was there.
// Thread: the test's main thread, while no other thread reads the environment.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace orvanta::testing {

class ScopedTmpdir {
public:
    explicit ScopedTmpdir(const QString& folder) : saved_(qgetenv("TMPDIR")), wasSet_(qEnvironmentVariableIsSet("TMPDIR")) {
        qputenv("TMPDIR", folder.toLocal8Bit());
    }
    ~ScopedTmpdir() {
        if (wasSet_) qputenv("TMPDIR", saved_);
        else qunsetenv("TMPDIR");
    }
    ScopedTmpdir(const ScopedTmpdir&) = delete;
    ScopedTmpdir& operator=(const ScopedTmpdir&) = delete;

private:
    QByteArray saved_;
    bool wasSet_;
};

} // namespace orvanta::testing
