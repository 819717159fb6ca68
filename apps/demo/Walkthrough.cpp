#include "Walkthrough.h"

#include "WindowItems.h"

#include <QDir>
#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QTest>

#include <cstdio>

namespace orvanta::demo {

namespace {

// Whether every picture under `root` that is meant to show has loaded.
bool picturesLoaded(QQuickItem* root) {
    for (QQuickItem* child : root->childItems()) {
        const bool shown = child->isVisible() || child->objectName() == QLatin1String("picture");
        if (child->objectName() == QLatin1String("picture") && child->parentItem()->isVisible() &&
            child->property("status").toInt() != 1 /* Image.Ready */)
            return false;
        if (shown && !picturesLoaded(child)) return false;
    }
    return true;
}

// The PNG files in the user's Pictures folder, newest last.
QFileInfoList photos() {
    const QDir pictures(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
    return pictures.entryInfoList({"*.png"}, QDir::Files, QDir::Time | QDir::Reversed);
}

} // namespace

Walkthrough::Walkthrough(QQuickWindow& window, QString outputFolder) : window_(window), folder_(std::move(outputFolder)) {}

QQuickItem* Walkthrough::item(const char* name) const {
    return WindowItems::find(window_.contentItem(), QString::fromLatin1(name));
}

QObject* Walkthrough::dishScreen() const {
    for (const char* view : {"arView", "threeDViewer"})
        if (QQuickItem* shown = item(view)) return shown->property("screen").value<QObject*>();
    return nullptr;
}

void Walkthrough::click(QQuickItem* target) {
    if (!target) return;
    const QPointF centre = target->mapToScene(QPointF(target->width() / 2, target->height() / 2));
    QTest::mouseClick(&window_, Qt::LeftButton, {}, centre.toPoint());
}

void Walkthrough::tapScreen() {
    QTest::mouseClick(&window_, Qt::LeftButton, {}, QPoint(window_.width() / 2, window_.height() / 3));
}

QString Walkthrough::saveScreenshot(const QString& name) {
    const QString path = QDir(folder_).filePath(QString("%1-%2.png").arg(number_, 2, 10, QChar('0')).arg(name));
    window_.grabWindow().save(path);
    return path;
}

bool Walkthrough::step(const QString& name, const std::function<void()>& act, const std::function<bool()>& reached) {
    ++number_;
    QElapsedTimer timer;
    timer.start();
    act();
    if (!QTest::qWaitFor(reached, stepTimeoutMs)) {
        saveScreenshot(name + "-failed");
        std::printf("step %d %s: did not reach its state within %d s\n", number_, qPrintable(name), stepTimeoutMs / 1000);
        return false;
    }
    // Two more frames, so that the screenshot shows the state reached.
    QTest::qWait(2 * 16);
    saveScreenshot(name);
    std::printf("step %d %s: %.2f s\n", number_, qPrintable(name), timer.elapsed() / 1000.0);
    std::fflush(stdout);
    return true;
}

int Walkthrough::run() {
    QDir().mkpath(folder_);
    clock_.start();
    const auto dishProperty = [this](const char* property) {
        QObject* screen = dishScreen();
        return screen ? screen->property(property) : QVariant();
    };
    const auto depth = [this] {
        QQuickItem* stack = item("navigationStack");
        return stack && !stack->property("busy").toBool() ? stack->property("depth").toInt() : -1;
    };
    qsizetype photosBefore = 0;

    const bool all =
        step("menu", [] {},
             [this] {
                 QQuickItem* grid = item("menuGrid");
                 QQuickItem* first = item("card0");
                 return grid && grid->property("count").toInt() > 0 && first && first->width() > 0 && picturesLoaded(grid);
             }) &&
        step("dish-opened", [this] { click(item("card0")); }, [&] { return depth() == 2 && item("arView"); }) &&
        step("dish-on-the-table", [] {},
             [&] { return dishProperty("isModelLoaded").toBool() && item("arView")->property("texturesReady").toBool(); }) &&
        step("captured",
             [this] {
                 tapScreen();
                 QTest::qWaitFor([this] { return item("captureButton") != nullptr; }, stepTimeoutMs);
                 click(item("captureButton"));
             },
             [&] { return dishProperty("showsThumbnail").toBool(); }) &&
        step("thumbnail",
             [&] { captured_ = dishProperty("capturedImage").value<QImage>(); },
             [this] {
                 QQuickItem* thumbnail = item("thumbnail");
                 return thumbnail && qFuzzyCompare(thumbnail->scale(), 0.2);
             }) &&
        step("preview", [this] { click(item("thumbnail")); }, [&] { return depth() == 3 && item("saveButton"); }) &&
        step("saved-to-photos",
             [&] {
                 photosBefore = photos().size();
                 click(item("saveButton"));
             },
             [&] { return photos().size() > photosBefore && !QImage(photos().last().filePath()).isNull(); }) &&
        step("share-sheet",
             [&] {
                 QFile::copy(photos().last().filePath(), QDir(folder_).filePath("saved-photo.png"));
                 captured_.save(QDir(folder_).filePath("captured.png"));
                 click(item("shareButton"));
             },
             [this] {
                 // The sheet has slid all the way up.
                 QQuickItem* copy = item("copy");
                 QQuickItem* card = item("card");
                 return copy && card && card->mapToScene({0, card->height()}).y() <= window_.height() + 0.5;
             }) &&
        step("copied-to-clipboard",
             [this] {
                 QGuiApplication::clipboard()->clear();
                 click(item("copy"));
             },
             [this] { return item("copy") == nullptr && !QGuiApplication::clipboard()->image().isNull(); }) &&
        step("back-in-3d",
             [&] {
                 click(item("doneButton"));
                 QTest::qWaitFor([&] { return depth() == 2; }, stepTimeoutMs);
                 tapScreen();
                 QTest::qWaitFor([this] { return item("mode3D") != nullptr; }, stepTimeoutMs);
                 click(item("mode3D"));
             },
             [&] {
                 QQuickItem* viewer = item("threeDViewer");
                 return viewer && dishProperty("isModelLoaded").toBool() && !dishProperty("showsProgress").toBool() &&
                        viewer->property("texturesReady").toBool();
             }) &&
        step("closed",
             [this] {
                 tapScreen();
                 QTest::qWaitFor([this] { return item("closeButton") != nullptr; }, stepTimeoutMs);
                 click(item("closeButton"));
             },
             [&] { return depth() == 1; }) &&
        step("full-screen", [this] { click(item("openFullScreen")); },
             [this] {
                 // A second menu, presented over the whole window, has slid all the way up.
                 const QList<QQuickItem*> stacks = WindowItems::findAll(window_.contentItem(), "navigationStack");
                 return stacks.size() == 2 && stacks.last()->mapToScene({0, 0}).y() <= 0.5;
             }) &&
        step("full-screen-closed",
             [this] { click(WindowItems::findAll(window_.contentItem(), "backButton").last()); },
             [this] { return WindowItems::findAll(window_.contentItem(), "menuGrid").size() == 1; });

    std::printf("walkthrough %s in %.2f s, of which scripted waits 5.50 s (the dish screen's 5 s first-load "
                "check and the thumbnail's 0.5 s animation)\n",
                all ? "finished" : "stopped", clock_.elapsed() / 1000.0);
    std::printf("screenshots: %s\n", qPrintable(QDir(folder_).absolutePath()));
    return all ? 0 : 1;
}

} // namespace orvanta::demo
