#include "focus/Segment.h"

#include "reality/MeshResource.h"
#include "reality/PhysicallyBasedMaterial.h"

namespace orvanta::focus {

namespace {
reality::ModelComponent glowingPlane(const QColor& color) {
    reality::PhysicallyBasedMaterial material;
    material.baseColorTint = Qt::black;
    material.emissiveColor = color;
    material.emissiveIntensity = 2.0f;
    return {reality::MeshResource::generatePlane(1.0f, 1.0f), {material}};
}
} // namespace

Segment::Segment(std::string name, Corner corner, Alignment alignment, const QColor& color)
    : Entity(std::move(name)), corner_(corner), alignment_(alignment), plane_(glowingPlane(color)) {
    setScale(closedScale(alignment));
    setModel(plane_);
}

void Segment::open() {
    apply(opened(pose(), corner_, alignment_));
}

void Segment::close() {
    apply(closed(pose(), corner_, alignment_));
}

void Segment::apply(const SegmentPose& pose) {
    setPosition(pose.position);
    setScale(pose.scale);
}

} // namespace orvanta::focus
