#pragma once
// The camera picture of the simulated world: its surfaces drawn as a room (a floor, a wooden
// table with legs, a wall) with soft warm light from above and an ambient fill, so the view
// reads as a photo of a table and placed content is lit like the room. The wood is a texture
// the kit makes itself.
// Thread: main thread.

#include "arsession/SimulatedWorld.h"
#include "render/CameraFeed.h"
#include "render/DrawnMesh.h"

#include <memory>
#include <vector>

namespace orvanta::render {

class SimulatedRoomFeed final : public CameraFeed {
public:
    explicit SimulatedRoomFeed(std::vector<arsession::SimulatedWorld::Surface> surfaces =
                                   arsession::SimulatedWorld::defaultRoom());
    ~SimulatedRoomFeed() override;

    void attach(RenderResources& resources, QQuick3DNode* world, QQuickItem* background) override;
    // The room does not move: nothing to do per frame.
    void update(const arsession::ARFrame&) override {}

    // The kit's wood texture as PNG bytes (made once).
    static const import::ImportedTexture& woodTexture();

private:
    void addBox(RenderResources& resources, QQuick3DNode* parent, const QMatrix4x4& pose, QVector3D size,
                const reality::Material& material);

    std::vector<arsession::SimulatedWorld::Surface> surfaces_;
    std::vector<std::unique_ptr<DrawnMesh>> pieces_;
    std::vector<QQuick3DNode*> nodes_;
};

} // namespace orvanta::render
