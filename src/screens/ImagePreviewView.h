#pragma once
// The snapshot preview's state and actions: the picture held by an ImagePreview, "Done" to go
// back, "Share" to open the share sheet from the topmost controller, "Save to Photos" to write
// the picture into the user's Pictures folder. ImagePreviewView.qml only lays it out.
//
// Saving prints "Image saved to Photos!" at once and unconditionally; the write runs off the
// main thread and its outcome is not observed (there is deliberately no on-screen feedback).
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

public:
    explicit ImagePreviewView(QObject* parent = nullptr);

    ImagePreview* imagePreview() const { return imagePreview_; }
    void setImagePreview(ImagePreview* preview);

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

private:
    QPointer<ImagePreview> imagePreview_;
};

} // namespace orvanta
