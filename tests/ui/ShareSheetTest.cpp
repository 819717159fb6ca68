// The share sheet over a window: its activities, its keyboard use and how it looks.
#include "support/EventLoopWait.h"
#include "ShownWindow.h"
#include "core/TemporaryDirectory.h"
#include "ui/ActivityViewController.h"

#include <QAccessible>
#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>

using namespace orvanta;
using namespace orvanta::ui;
using orvanta::testing::EventLoopWait;
using orvanta::testing::ShownWindow;

namespace {

QImage snapshot() {
    QImage image(64, 48, QImage::Format_ARGB32);
    image.fill(QColor(200, 120, 40));
    image.setPixelColor(10, 10, Qt::blue);
    return image;
}

QImage decoded(const QImage& image) { return image.convertToFormat(QImage::Format_ARGB32); }

// A shown window whose root presents a share sheet of snapshot().
struct SheetOverWindow {
    explicit SheetOverWindow(QSize size = QSize(400, 300)) : shown(size) {
        shown.window->quickWindow()->setColor(QColor(30, 140, 160));
        shown.root->present(sheet, false);
        watched = sheet;
    }
    QQuickItem* item(const char* name) const { return sheet->view()->findChild<QQuickItem*>(name); }
    void press(Qt::Key key) const {
        QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier), up(QEvent::KeyRelease, key, Qt::NoModifier);
        QCoreApplication::sendEvent(shown.window->quickWindow(), &down);
        QCoreApplication::sendEvent(shown.window->quickWindow(), &up);
    }
    bool closed() const {
        return EventLoopWait::until([this] { return !watched && !shown.root->presentedViewController(); });
    }

    ShownWindow shown;
    ActivityViewController* sheet = new ActivityViewController({QVariant(snapshot())});
    QPointer<ActivityViewController> watched;
};

// Stands in for the desktop's application for files: records what it was asked to open.
class FileOpener : public QObject {
    Q_OBJECT

public:
    FileOpener() { QDesktopServices::setUrlHandler("file", this, "open"); }
    ~FileOpener() override { QDesktopServices::unsetUrlHandler("file"); }
    Q_INVOKABLE void open(const QUrl& url) { opened.push_back(url); }
    std::vector<QUrl> opened;
};

// Save as… writes the chosen file; Open with… hands a temporary PNG to the desktop; both close.
TEST(ShareSheet, SaveAsAndOpenWithWriteTheSnapshotAndClose) {
    QTemporaryDir folder;
    const QString path = folder.filePath("chosen.png");
    std::optional<core::Result<QString>> outcome;
    SheetOverWindow saving;
    saving.sheet->saveAs(path, [&](core::Result<QString> result) { outcome = std::move(result); });
    EXPECT_TRUE(saving.closed());
    ASSERT_TRUE(EventLoopWait::until([&] { return outcome.has_value(); }));
    ASSERT_TRUE(outcome->ok()) << outcome->error().description();
    EXPECT_EQ(outcome->value(), path);
    EXPECT_EQ(decoded(QImage(path, "PNG")), snapshot());

    FileOpener opener;
    SheetOverWindow opening;
    opening.sheet->openWith();
    EXPECT_TRUE(opening.closed());
    ASSERT_TRUE(EventLoopWait::until([&] { return !opener.opened.empty(); }));
    const QString opened = opener.opened.front().toLocalFile();
    EXPECT_EQ(decoded(QImage(opened, "PNG")), snapshot());
    EXPECT_EQ(QFileInfo(opened).dir(), QDir(QString::fromStdString(core::TemporaryDirectory::url().value().path())));
    QFile::remove(opened);
}

TEST(ShareSheet, KeyboardRunsTheFocusedActivityAndEscapeCancels) {
    QGuiApplication::clipboard()->clear();
    for (bool copy : {false, true}) {
        SheetOverWindow over;
        ASSERT_TRUE(EventLoopWait::until([&] { return over.item("copy")->hasActiveFocus(); })) << "Copy has the focus first";
        if (!copy) {
            over.press(Qt::Key_Tab);
            over.press(Qt::Key_Return);
            ASSERT_TRUE(over.item("path")->isVisible()) << "Save as… asks where";
            over.press(Qt::Key_Escape);
            EXPECT_TRUE(over.item("copy")->isVisible()) << "Escape goes back to the list first";
        }
        over.press(copy ? Qt::Key_Return : Qt::Key_Escape);
        EXPECT_TRUE(over.closed());
        EXPECT_EQ(decoded(QGuiApplication::clipboard()->image()).isNull(), !copy);
    }
    EXPECT_EQ(decoded(QGuiApplication::clipboard()->image()), snapshot());
}

// The sheet fits a narrow portrait window and a wide landscape one: the card sits at the bottom
// inside the window, its buttons (accessible by name and role) inside the card one under
// another, the rest dimmed.
TEST(ShareSheet, FitsSmallAndWideWindows) {
    for (QSize size : {QSize(360, 640), QSize(900, 500)}) {
        SCOPED_TRACE(::testing::Message() << size.width() << "x" << size.height());
        SheetOverWindow over(size);
        QQuickWindow* window = over.shown.window->quickWindow();
        const QImage grab = window->grabWindow();

        const QRectF windowRect(QPointF(0, 0), size);
        QQuickItem* card = over.item("card");
        const QRectF cardRect = card->mapRectToScene(card->boundingRect());
        EXPECT_TRUE(windowRect.contains(cardRect));
        EXPECT_GT(cardRect.top(), size.height() / 3) << "the card is at the bottom";
        qreal previousBottom = cardRect.top();
        for (const auto& [name, label] : std::vector<std::pair<const char*, QString>>{
                 {"copy", "Copy"}, {"saveAs", "Save as…"}, {"openWith", "Open with…"}, {"cancel", "Cancel"}}) {
            SCOPED_TRACE(name);
            QQuickItem* button = over.item(name);
            ASSERT_NE(button, nullptr);
            const QRectF rect = button->mapRectToScene(button->boundingRect());
            EXPECT_TRUE(cardRect.contains(rect));
            EXPECT_GE(rect.top(), previousBottom);
            EXPECT_GT(rect.height(), 20);
            previousBottom = rect.bottom();
            EXPECT_TRUE(button->activeFocusOnTab());
            QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(button);
            ASSERT_NE(accessible, nullptr);
            EXPECT_EQ(accessible->role(), QAccessible::Button);
            EXPECT_EQ(accessible->text(QAccessible::Name), label);
        }
        const QColor backdrop = grab.pixelColor(5, 5);
        EXPECT_LT(backdrop.green(), 100) << "the window behind is dimmed";
    }
}

} // namespace

#include "ShareSheetTest.moc"
