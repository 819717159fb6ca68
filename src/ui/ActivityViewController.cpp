#include "ui/ActivityViewController.h"

#include "core/Log.h"
#include "core/TemporaryDirectory.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QStandardPaths>
#include <QUrl>

// The sheet's layout is compiled into the library; a static library registers it by hand.
static void registerSheetResources() { Q_INIT_RESOURCE(ui); }

namespace orvanta::ui {

namespace {

// The engine that builds share sheets, made on first use and kept by the application object.
QQmlEngine& sheetEngine() {
    static QPointer<QQmlEngine> engine;
    if (!engine) {
        registerSheetResources();
        engine = new QQmlEngine(QCoreApplication::instance());
    }
    return *engine;
}

} // namespace

ActivityViewController::ActivityViewController(std::vector<QVariant> activityItems, QObject* parent)
    : ViewController(parent), items_(std::move(activityItems)) {
    setModalPresentationStyle(ModalPresentationStyle::overFullScreen);
}

const std::vector<QVariant>& ActivityViewController::activityItems() const { return items_; }

QImage ActivityViewController::image() const {
    for (const QVariant& item : items_)
        if (item.canConvert<QImage>()) return item.value<QImage>();
    return {};
}

QString ActivityViewController::suggestedSavePath() const {
    return QDir(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation)).filePath(QStringLiteral("Picture.png"));
}

void ActivityViewController::setReportHandler(ReportHandler handler) { report_ = std::move(handler); }

void ActivityViewController::copyToClipboard() {
    QGuiApplication::clipboard()->setImage(image());
    if (report_) report_(true, tr("Copied to the clipboard."));
    dismiss(true);
}

void ActivityViewController::saveAs(const QString& path) { saveAs(path, {}); }

void ActivityViewController::saveAs(const QString& path, PngFile::Done done) {
    finish("saved", [image = image(), path] { return PngFile::replace(image, path); }, std::move(done),
           tr("Saved as %1.").arg(QFileInfo(path).fileName()), tr("The photo could not be saved there."));
}

void ActivityViewController::openWith() { openWith({}); }

void ActivityViewController::openWith(PngFile::Done done) {
    auto write = [image = image()]() -> core::Result<QString> {
        const auto folder = core::TemporaryDirectory::url();
        if (!folder) return folder.error();
        return PngFile::createUnique(image, QString::fromStdString(folder->path()), QStringLiteral("Shared picture"));
    };
    auto open = [](const QString& path) {
        if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
            core::Log::print("No application opened the picture " + path.toStdString() + ".");
    };
    finish("opened", std::move(write), std::move(done), QString(), tr("The photo could not be opened."), std::move(open));
}

void ActivityViewController::cancel() { dismiss(true); }

void ActivityViewController::finish(const char* activity, std::function<core::Result<QString>()> write,
                                    PngFile::Done done, QString confirmation, QString failure,
                                    std::function<void(const QString&)> then) {
    // The sheet may be gone when the write ends, so the report holds nothing of it.
    PngFile::inBackground(std::move(write), [activity, done = std::move(done), then = std::move(then), report = report_,
                                             confirmation = std::move(confirmation),
                                             failure = std::move(failure)](core::Result<QString> outcome) {
        if (!outcome) {
            core::Log::print(std::string("The picture was not ") + activity + ": " + outcome.error().localizedDescription());
            if (report) report(false, failure);
        } else {
            if (then) then(outcome.value());
            if (report && !confirmation.isEmpty()) report(true, confirmation);
        }
        if (done) done(std::move(outcome));
    });
    dismiss(true);
}

std::unique_ptr<QQuickItem> ActivityViewController::loadView() {
    QQmlComponent component(&sheetEngine(), QUrl(QStringLiteral("qrc:/orvanta/ui/ShareSheet.qml")));
    QObject* made = component.createWithInitialProperties({{QStringLiteral("sheet"), QVariant::fromValue<QObject*>(this)}});
    if (!made) qFatal("The share sheet's layout does not load: %s", qPrintable(component.errorString()));
    return std::unique_ptr<QQuickItem>(qobject_cast<QQuickItem*>(made));
}

} // namespace orvanta::ui
