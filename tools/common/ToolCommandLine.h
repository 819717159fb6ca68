#pragma once
// What the command line of every program of the project shares: its name and version (the
// project's, for --version), a description, and --help. Programs that draw make their
// QGuiApplication after GlSupport::allowStartWithoutDisplay(), so both answer anywhere.
// Thread: main thread, after the application object exists.

#include <QCommandLineParser>
#include <QCoreApplication>

namespace orvanta::tools {

class ToolCommandLine {
public:
    static void prepare(QCommandLineParser& parser, const char* name, const QString& description) {
        QCoreApplication::setApplicationName(QString::fromLatin1(name));
        QCoreApplication::setApplicationVersion(QStringLiteral(ORVANTA_VERSION));
        parser.setApplicationDescription(description);
        parser.addHelpOption();
        parser.addVersionOption();
    }
};

} // namespace orvanta::tools
