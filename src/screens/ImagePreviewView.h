#pragma once
// The snapshot preview's state and actions: the picture held by an ImagePreview, "Done" to go
// back, "Share" to open the share sheet from the topmost controller, "Save to Photos" to write
// the picture into the user's Pictures folder. ImagePreviewView.qml only lays it out.
//
// Saving prints "Image saved to Photos!" at once and unconditionally; the write runs off the
// main thread, and once it has ended the screen tells the guest in one short sentence whether
// the photo was written. The share sheet's activities report the same way.
// Thread: main thread.

#include <OrvantaARFoodSDK/ImagePreview.h>

#include <QObject>
#include <QPointer>

namespace orvanta {

namespace ui {
class Application;
class ViewController;
} // namespace ui

class ImagePreviewView : public QObject {
    Q_OBJECT
    Q_PROPERTY(orvanta::ImagePreview* imagePreview READ imagePreview WRITE setImagePreview NOTIFY imagePreviewChanged)
    // The last outcome of a save or a share activity, for the guest; empty before the first.
    Q_PROPERTY(QString report READ report NOTIFY reported)
    Q_PROPERTY(bool reportIsFailure READ reportIsFailure NOTIFY reported)

public:
    explicit ImagePreviewView(QObject* parent = nullptr);

    ImagePreview* imagePreview() const { return imagePreview_; }
    void setImagePreview(ImagePreview* preview);
    const QString& report() const { return report_; }
    bool reportIsFailure() const { return reportIsFailure_; }

    // "Done": asks to be dismissed (the navigation stack pops the preview).
    Q_INVOKABLE void done();
    // "Save to Photos".
    Q_INVOKABLE void saveImageToPhotos();
    // "Share": a share sheet with the picture, presented from the topmost controller; nothing
    // happens when there is none.
    Q_INVOKABLE void shareImage();

    // The topmost controller of `application`: the first connected scene, if it is a window
    // scene its first window, that window's root controller, then down the chain of presented
    // controllers; a navigation controller at the end gives its top controller (maybe none).
    static ui::ViewController* getTopViewController(const ui::Application& application);

signals:
    void dismissRequested();
    void imagePreviewChanged();
    // A save or a share activity has ended (also when it reports the same sentence again).
    void reported();

private:
    void setReport(bool succeeded, const QString& sentence);

    QPointer<ImagePreview> imagePreview_;
    QString report_;
    bool reportIsFailure_ = false;
};

} // namespace orvanta
