#pragma once
// The share sheet: a card at the bottom of the window, over a dimmed backdrop, offering what
// a desktop can do with a picture: "Copy" (to the clipboard), "Save as…" (a file of the
// user's choosing, asked for in the sheet itself), "Open with…" (the desktop's viewer for
// PNG files) and "Cancel". Each activity works from the keyboard (Tab moves between them,
// Return or Space runs one, Escape cancels) and is a C++ call too. After an activity the
// sheet dismisses itself. Files are written off the main thread; a failure is reported as a
// console line (and to the caller's `done`, when given). What the guest is to read about the
// outcome (a short confirmation, or that it failed) goes to the report handler, when set.
// Thread: main thread, every method.

#include "ui/PngFile.h"
#include <OrvantaARFoodSDK/ViewController.h>

#include <QVariant>

#include <functional>
#include <vector>

namespace orvanta::ui {

class ActivityViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString suggestedSavePath READ suggestedSavePath CONSTANT)

public:
    // Receives a sentence for the guest once an activity has run: `succeeded` tells a
    // confirmation from a failure.
    using ReportHandler = std::function<void(bool succeeded, const QString& sentence)>;

    // Shares the first picture (QImage) among `activityItems`; with none, an empty picture.
    // Presents over full screen: the sheet's own view draws the dimmed backdrop and the card.
    // Main thread.
    explicit ActivityViewController(std::vector<QVariant> activityItems, QObject* parent = nullptr);

    // As given. Main thread.
    const std::vector<QVariant>& activityItems() const;
    // The picture the activities share. Main thread.
    QImage image() const;
    // Where "Save as…" proposes to write: the Pictures folder. Main thread.
    QString suggestedSavePath() const;

    // Puts the picture on the clipboard. Main thread.
    Q_INVOKABLE void copyToClipboard();
    // Writes the picture as a PNG to `path` (replacing a file there). Main thread.
    Q_INVOKABLE void saveAs(const QString& path);
    void saveAs(const QString& path, PngFile::Done done);
    // Writes the picture as a PNG into the kit's temporary folder and opens that file with the
    // desktop's application for it. Main thread.
    Q_INVOKABLE void openWith();
    void openWith(PngFile::Done done);
    // Closes the sheet without an activity. Main thread.
    Q_INVOKABLE void cancel();
    // Where the sheet reports its activities' outcomes; it may outlive the sheet. Main thread.
    void setReportHandler(ReportHandler handler);

protected:
    std::unique_ptr<QQuickItem> loadView() override;

private:
    void finish(const char* activity, std::function<core::Result<QString>()> write, PngFile::Done done,
                QString confirmation, QString failure, std::function<void(const QString&)> then = {});

    std::vector<QVariant> items_;
    ReportHandler report_;
};

} // namespace orvanta::ui
