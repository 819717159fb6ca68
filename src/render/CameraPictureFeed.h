#pragma once
// The AR view's background for a session whose frames carry camera pictures: the latest
// picture fills the view behind the 3D content, aspect-filled exactly as the session camera
// projects (ARCamera::visibleImageRect), and the content is lit by one neutral light from
// above with an even ambient share, as a photo of a table under room light looks. The light
// follows the picture's mean brightness (sampled on a coarse grid, smoothed over frames), so a
// dish in a dim picture is not lit brighter than its table.
// Thread: main thread.

#include "render/CameraFeed.h"

#include <memory>

class QQuick3DDirectionalLight;

namespace orvanta::render {

class CameraPictureItem;

class CameraPictureFeed final : public CameraFeed {
public:
    CameraPictureFeed() = default;
    ~CameraPictureFeed() override;

    void attach(RenderResources& resources, QQuick3DNode* world, QQuickItem* background) override;
    void update(const arsession::ARFrame& frame) override;

    // Mean brightness of `picture` in [0, 1] (Rec. 709 weights on a 16 × 12 grid of samples).
    static float meanBrightness(const QImage& picture);

private:
    void light(float brightness);

    CameraPictureItem* picture_ = nullptr;
    QQuick3DDirectionalLight* light_ = nullptr;
    // The picture on screen: held so that a recycling pool does not reuse it while shown, and so
    // that a frame carrying the same picture again costs no upload.
    std::shared_ptr<const QImage> shown_;
    float brightness_ = -1.0f; // smoothed; negative before the first picture
};

} // namespace orvanta::render
