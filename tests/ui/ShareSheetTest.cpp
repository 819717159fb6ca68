// The share sheet over a window: its activities, its keyboard use and how it looks.
#include "EventWait.h"
#include "ShownWindow.h"
#include "ui/ActivityViewController.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>

using namespace orvanta;
using namespace orvanta::ui;
using orvanta::testing::runEventsUntil;
using orvanta::testing::ShownWindow;

namespace {

QImage snapshot() {
    QImage image(64, 48, QImage::Format_ARGB32);
    image.fill(QColor(200, 120, 40));
    image.setPixelColor(10, 10, Qt::blue);
    return image;
}

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
        return runEventsUntil([this] { return !watched && !shown.root->presentedViewController(); });
    }

    ShownWindow shown;
    ActivityViewController* sheet = new ActivityViewController({QVariant(snapshot())});
    QPointer<ActivityViewController> watched;
};

TEST(ShareSheet, ListsEachActivityAsAnAccessibleButton) {
    SheetOverWindow over;
    for (const auto& [name, label] : std::vector<std::pair<const char*, QString>>{
             {"copy", "Copy"}, {"saveAs", "Save as…"}, {"openWith", "Open with…"}, {"cancel", "Cancel"}}) {
        SCOPED_TRACE(name);
        QQuickItem* button = over.item(name);
        ASSERT_NE(button, nullptr);
        EXPECT_TRUE(button->isVisible());
        EXPECT_TRUE(button->activeFocusOnTab());
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(button);
        ASSERT_NE(accessible, nullptr);
        EXPECT_EQ(accessible->role(), QAccessible::Button);
        EXPECT_EQ(accessible->text(QAccessible::Name), label);
    }
}

TEST(ShareSheet, CopyPutsThePictureOnTheClipboardAndCloses) {
    QGuiApplication::clipboard()->clear();
    SheetOverWindow over;
    over.sheet->copyToClipboard();
    EXPECT_EQ(QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_ARGB32), snapshot());
    EXPECT_TRUE(over.closed());
}

TEST(ShareSheet, SaveAsWritesTheGivenFileAndCloses) {
    QTemporaryDir folder;
    const QString path = folder.filePath("chosen.png");
    std::optional<core::Result<QString>> outcome;
    SheetOverWindow over;
    over.sheet->saveAs(path, [&](core::Result<QString> result) { outcome = std::move(result); });

    EXPECT_TRUE(over.closed());
    ASSERT_TRUE(runEventsUntil([&] { return outcome.has_value(); }));
    ASSERT_TRUE(outcome->ok()) << outcome->error().description();
    EXPECT_EQ(outcome->value(), path);
    EXPECT_EQ(QImage(path, "PNG").convertToFormat(QImage::Format_ARGB32), snapshot());
}

TEST(ShareSheet, KeyboardRunsTheFocusedActivityAndEscapeCancels) {
    {
        QGuiApplication::clipboard()->clear();
        SheetOverWindow over;
        ASSERT_TRUE(runEventsUntil([&] { return over.item("copy")->hasActiveFocus(); })) << "Copy has the focus first";
        over.press(Qt::Key_Return);
        EXPECT_TRUE(over.closed());
        EXPECT_EQ(QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_ARGB32), snapshot());
    }
    {
        QGuiApplication::clipboard()->clear();
        SheetOverWindow over;
        ASSERT_TRUE(runEventsUntil([&] { return over.item("copy")->hasActiveFocus(); }));
        over.press(Qt::Key_Tab);
        EXPECT_TRUE(over.item("saveAs")->hasActiveFocus());
        over.press(Qt::Key_Return);
        ASSERT_TRUE(over.item("path")->isVisible()) << "Save as… asks where";
        over.press(Qt::Key_Escape);
        EXPECT_TRUE(over.item("copy")->isVisible()) << "Escape goes back to the list first";
        EXPECT_TRUE(over.watched);
        over.press(Qt::Key_Escape);
        EXPECT_TRUE(over.closed());
        EXPECT_TRUE(QGuiApplication::clipboard()->image().isNull()) << "cancel runs no activity";
    }
}

// The sheet fits a narrow portrait window and a wide landscape one: the card sits at the bottom
// inside the window, its buttons inside the card one under another, the rest dimmed.
TEST(ShareSheet, FitsSmallAndWideWindows) {
    for (QSize size : {QSize(360, 640), QSize(900, 500)}) {
        SCOPED_TRACE(::testing::Message() << size.width() << "x" << size.height());
        SheetOverWindow over(size);
        QQuickWindow* window = over.shown.window->quickWindow();
        const QImage grab = window->grabWindow();
        grab.save(QString::fromStdString(::testing::TempDir()) + QStringLiteral("share-sheet-%1x%2.png").arg(size.width()).arg(size.height()));

        const QRectF windowRect(QPointF(0, 0), size);
        QQuickItem* card = over.item("card");
        const QRectF cardRect = card->mapRectToScene(card->boundingRect());
        EXPECT_TRUE(windowRect.contains(cardRect));
        EXPECT_GT(cardRect.top(), size.height() / 3) << "the card is at the bottom";
        qreal previousBottom = cardRect.top();
        for (const char* name : {"copy", "saveAs", "openWith", "cancel"}) {
            QQuickItem* button = over.item(name);
            const QRectF rect = button->mapRectToScene(button->boundingRect());
            EXPECT_TRUE(cardRect.contains(rect)) << name;
            EXPECT_GE(rect.top(), previousBottom) << name;
            EXPECT_GT(rect.height(), 20) << name;
            previousBottom = rect.bottom();
        }
        const QColor backdrop = grab.pixelColor(5, 5);
        EXPECT_LT(backdrop.green(), 100) << "the window behind is dimmed";
    }
}

} // namespace
