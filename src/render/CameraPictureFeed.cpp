#include "render/CameraPictureFeed.h"

#include "render/CameraPictureItem.h"

#include <QtQuick3D/private/qquick3ddirectionallight_p.h>

#include <algorithm>

namespace orvanta::render {

namespace {

constexpr int kSamplesAcross = 16, kSamplesDown = 12;
// How much of a new picture's brightness enters the smoothed value each frame.
constexpr float kBrightnessFollow = 0.15f;

} // namespace

CameraPictureFeed::~CameraPictureFeed() {
    delete picture_;
    if (light_) {
        light_->setParentItem(nullptr);
        delete light_;
    }
}

void CameraPictureFeed::attach(RenderResources&, QQuick3DNode* world, QQuickItem* background) {
    picture_ = new CameraPictureItem(background);
    picture_->setSize(background->size());
    // The picture fills the background as the background follows the view's size.
    QObject::connect(background, &QQuickItem::widthChanged, picture_, [this, background] { picture_->setWidth(background->width()); });
    QObject::connect(background, &QQuickItem::heightChanged, picture_, [this, background] { picture_->setHeight(background->height()); });

    // Straight down onto the table, leaning a little away from the card's front edge, so a
    // dish shows lit tops and softly shaded sides whichever way the camera looks.
    light_ = new QQuick3DDirectionalLight();
    light_->setParentItem(world);
    light_->setEulerRotation(QVector3D(-75.0f, 0.0f, 0.0f));
    light_->setColor(Qt::white);
    light(0.5f);
}

void CameraPictureFeed::update(const arsession::ARFrame& frame) {
    if (!picture_) return;
    const QRectF visible = frame.camera.visibleImageRect(picture_->size());
    if (!frame.capturedImage || frame.capturedImage == shown_) {
        picture_->show(nullptr, visible);
        return;
    }
    shown_ = frame.capturedImage;
    picture_->show(shown_, visible);
    const float measured = meanBrightness(*shown_);
    brightness_ = brightness_ < 0.0f ? measured : brightness_ + kBrightnessFollow * (measured - brightness_);
    light(brightness_);
}

void CameraPictureFeed::light(float brightness) {
    // A mid-grey picture (0.5) gets the key light at 1.0 and an ambient share of 0.45.
    light_->setBrightness(std::clamp(0.5f + brightness, 0.6f, 1.4f));
    const float ambient = std::clamp(0.2f + 0.5f * brightness, 0.2f, 0.6f);
    light_->setAmbientColor(QColor::fromRgbF(ambient, ambient, ambient));
}

float CameraPictureFeed::meanBrightness(const QImage& picture) {
    if (picture.isNull()) return 0.0f;
    float sum = 0.0f;
    for (int j = 0; j < kSamplesDown; ++j) {
        const int y = (2 * j + 1) * picture.height() / (2 * kSamplesDown);
        for (int i = 0; i < kSamplesAcross; ++i) {
            const QRgb p = picture.pixel((2 * i + 1) * picture.width() / (2 * kSamplesAcross), y);
            sum += 0.2126f * qRed(p) + 0.7152f * qGreen(p) + 0.0722f * qBlue(p);
        }
    }
    return sum / (255.0f * kSamplesAcross * kSamplesDown);
}

} // namespace orvanta::render
