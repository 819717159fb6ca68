#include "Walkthrough.h"

#include "WindowItems.h"
#include "render/ARViewItem.h"

#include <QDir>
#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QTest>

#include <algorithm>
#include <cstdio>

namespace orvanta::demo {

namespace {

// Whether every picture under `root` that is meant to show has finished loading or failed
// to: a picture that cannot load keeps its spinner, and waiting for it would never end.
bool picturesSettled(QQuickItem* root) {
    for (QQuickItem* child : root->childItems()) {
        const bool picture = child->objectName() == QLatin1String("picture");
        if (picture && child->parentItem()->isVisible() && child->property("status").toInt() == 2 /* Image.Loading */)
            return false;
        if ((child->isVisible() || picture) && !picturesSettled(child)) return false;
    }
    return true;
}

// The PNG files in the user's Pictures folder, newest last.
QFileInfoList photos() {
    const QDir pictures(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
    return pictures.entryInfoList({"*.png"}, QDir::Files, QDir::Time | QDir::Reversed);
}

// Whether the PNG file at `path` is completely written: it ends with the image-end chunk.
// The album writes off the main thread, so a new file may still be growing.
bool completelyWritten(const QString& path) {
    static const QByteArray imageEnd("\0\0\0\0IEND\xAE\x42\x60\x82", 12);
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.size() >= imageEnd.size() && file.seek(file.size() - imageEnd.size()) &&
           file.read(imageEnd.size()) == imageEnd;
}

} // namespace

const Walkthrough::ScriptedWait Walkthrough::firstLoadCheck{5.0, "the dish screen's 5 s first-load check"};
const Walkthrough::ScriptedWait Walkthrough::thumbnailAnimation{0.5, "the thumbnail's 0.5 s animation"};

Walkthrough::Walkthrough(QQuickWindow& window, QString outputFolder, Route route)
    : window_(window), folder_(std::move(outputFolder)), route_(route) {}

QQuickItem* Walkthrough::item(const char* name) const {
    return WindowItems::find(window_.contentItem(), QString::fromLatin1(name));
}

int Walkthrough::stackDepth() const {
    QQuickItem* stack = item("navigationStack");
    return stack && !stack->property("busy").toBool() ? stack->property("depth").toInt() : -1;
}

bool Walkthrough::dishStands() const {
    const auto* view = qobject_cast<render::ARViewItem*>(item("arView"));
    if (!view || !view->arView() || !dishState("isModelLoaded").toBool() || !view->texturesReady()) return false;
    const auto& anchors = view->arView()->scene().anchors();
    return std::any_of(anchors.begin(), anchors.end(),
                       [](const auto& anchor) { return anchor->isAnchored() && anchor->anchorIdentifier(); });
}

QVariant Walkthrough::dishState(const char* property) const {
    QObject* screen = dishScreen();
    return screen ? screen->property(property) : QVariant();
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

void Walkthrough::waitUntil(const std::function<bool()>& condition, int timeoutMs) {
    [[maybe_unused]] const bool held = QTest::qWaitFor(condition, timeoutMs);
}

void Walkthrough::waitForFrames(int count) {
    // The swap is signalled from the render thread and counted on this one through a queued
    // call; the counter's context object lives on this stack frame, so a call still queued when
    // the wait ends is dropped with it instead of writing into a frame that is gone.
    int drawn = 0;
    QObject counter;
    QObject::connect(&window_, &QQuickWindow::frameSwapped, &counter, [&drawn] { ++drawn; });
    for (int frame = 1; frame <= count; ++frame) {
        window_.update();
        waitUntil([&] { return drawn >= frame; }, 1000);
    }
}

QString Walkthrough::saveScreenshot(const QString& name) {
    const QString path = QDir(folder_).filePath(QString("%1-%2.png").arg(number_, 2, 10, QChar('0')).arg(name));
    window_.grabWindow().save(path);
    return path;
}

bool Walkthrough::step(const QString& name, const std::function<void()>& act, const std::function<bool()>& reached,
                       ScriptedWait scripted) {
    ++number_;
    QElapsedTimer timer;
    timer.start();
    act();
    // The state must still hold once two more frames are drawn: what it needs on screen may
    // start only when the next frame syncs it (a viewer asks for its textures then).
    const auto settled = [&] {
        if (!reached()) return false;
        waitForFrames(2);
        return reached();
    };
    if (!QTest::qWaitFor(settled, stepTimeoutMs)) {
        saveScreenshot(name + "-failed");
        std::printf("step %d %s: did not reach its state within %d s\n", number_, qPrintable(name), stepTimeoutMs / 1000);
        return false;
    }
    saveScreenshot(name);
    if (scripted.what) waited_.push_back(scripted);
    std::printf("step %d %s: %.2f s\n", number_, qPrintable(name), timer.elapsed() / 1000.0);
    std::fflush(stdout);
    return true;
}

int Walkthrough::run() {
    QDir().mkpath(folder_);
    clock_.start();
    bool finished = openDish();
    if (finished && route_.failing)
        finished = step(
            "load-failed", [] {},
            [this] {
                QQuickItem* message = item("loadError");
                return message && item("retryButton");
            },
            firstLoadCheck);
    else if (finished)
        finished = placeCaptureShareAndClose();
    printSummary(finished);
    return finished ? 0 : 1;
}

bool Walkthrough::openDish() {
    const QString card = QStringLiteral("card%1").arg(route_.dish);
    return step("menu", [] {},
                [this] {
                    QQuickItem* grid = item("menuGrid");
                    QQuickItem* first = item("card0");
                    return grid && grid->property("count").toInt() > route_.dish && first && first->width() > 0 &&
                           picturesSettled(grid);
                }) &&
           step("dish-opened",
                [&] {
                    // A dish further down the menu is scrolled into view first.
                    QMetaObject::invokeMethod(item("menuGrid"), "positionViewAtIndex", Q_ARG(int, route_.dish),
                                              Q_ARG(int, 2 /* GridView.Contain */));
                    waitUntil([&] { return item(qPrintable(card)) != nullptr; });
                    click(item(qPrintable(card)));
                },
                [&] { return stackDepth() == 2 && item("arView"); });
}

bool Walkthrough::placeCaptureShareAndClose() {
    qsizetype photosBefore = 0;

    return
        step(route_.camera ? "dish-on-the-card" : "dish-on-the-table", [] {}, [this] { return dishStands(); },
             firstLoadCheck) &&
        step("captured",
             [this] {
                 tapScreen();
                 waitUntil([this] { return item("captureButton") != nullptr; });
                 click(item("captureButton"));
             },
             [&] { return dishState("showsThumbnail").toBool(); }) &&
        step("thumbnail",
             [&] { captured_ = dishState("capturedImage").value<QImage>(); },
             [this] {
                 QQuickItem* thumbnail = item("thumbnail");
                 return thumbnail && qFuzzyCompare(thumbnail->scale(), 0.2);
             },
             thumbnailAnimation) &&
        step("preview", [this] { click(item("thumbnail")); }, [&] { return stackDepth() == 3 && item("saveButton"); }) &&
        step("saved-to-photos",
             [&] {
                 photosBefore = photos().size();
                 click(item("saveButton"));
             },
             [&] { return photos().size() > photosBefore && completelyWritten(photos().last().filePath()); }) &&
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
                 waitUntil([&] { return stackDepth() == 2; });
                 tapScreen();
                 waitUntil([this] { return item("mode3D") != nullptr; });
                 click(item("mode3D"));
             },
             [&] {
                 QQuickItem* viewer = item("threeDViewer");
                 return viewer && dishState("isModelLoaded").toBool() && !dishState("showsProgress").toBool() &&
                        viewer->property("texturesReady").toBool();
             }) &&
        step("closed",
             [this] {
                 tapScreen();
                 waitUntil([this] { return item("closeButton") != nullptr; });
                 click(item("closeButton"));
             },
             [&] { return stackDepth() == 1; }) &&
        step("full-screen", [this] { click(item("openFullScreen")); },
             [this] {
                 // A second menu, presented over the whole window, has slid all the way up.
                 const QList<QQuickItem*> stacks = WindowItems::findAll(window_.contentItem(), "navigationStack");
                 return stacks.size() == 2 && stacks.last()->mapToScene({0, 0}).y() <= 0.5;
             }) &&
        step("full-screen-closed",
             [this] { click(WindowItems::findAll(window_.contentItem(), "backButton").last()); },
             [this] { return WindowItems::findAll(window_.contentItem(), "menuGrid").size() == 1; });
}

void Walkthrough::printSummary(bool finished) const {
    double scripted = 0;
    QStringList what;
    for (const ScriptedWait& wait : waited_) {
        scripted += wait.seconds;
        what << QString::fromLatin1(wait.what);
    }
    std::printf("walkthrough %s in %.2f s", finished ? "finished" : "stopped", clock_.elapsed() / 1000.0);
    if (!waited_.empty()) std::printf(", of which scripted waits %.2f s (%s)", scripted, qPrintable(what.join(", ")));
    std::printf("\nscreenshots: %s\n", qPrintable(QDir(folder_).absolutePath()));
}

} // namespace orvanta::demo
