#pragma once
// The holder that hands the latest snapshot from the dish screen to the preview screen.
// Observable: `image` has one change signal, emitted on every write. It starts as an empty
// (null, zero-size) image and is never absent.
// Thread: main thread.

#include <QImage>
#include <QObject>

namespace orvanta {

class ImagePreview : public QObject {
    Q_OBJECT
    Q_PROPERTY(QImage image READ image NOTIFY imageChanged)

public:
    explicit ImagePreview(QObject* parent = nullptr) : QObject(parent) {}

    const QImage& image() const { return image_; }
    // Replaces the held image (one notification).
    void updateImage(QImage image) {
        image_ = std::move(image);
        emit imageChanged();
    }

signals:
    void imageChanged();

private:
    QImage image_;
};

} // namespace orvanta
