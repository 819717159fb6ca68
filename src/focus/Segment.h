#pragma once
// One of the eight bars of the classic focus square: a thin glowing plane along one edge of
// one corner, which opens (shortens and moves outward) and closes (lengthens back).
// Its length and place follow the pure moves of SegmentPose.h.
// Thread: every method on the main thread.

#include "focus/SegmentPose.h"
#include "reality/Entity.h"
#include "reality/ModelComponent.h"

#include <QColor>

#include <string>

namespace orvanta::focus {

class Segment : public reality::Entity {
public:
    static constexpr float thickness = kSegmentThickness;
    static constexpr float length = kSegmentLength;
    static constexpr float openLength = kSegmentOpenLength;

    // A closed bar named `name`, black with an emissive glow of `color` at intensity 2, scaled
    // to its closed length along its axis and its thickness across. Its position is the owner's.
    Segment(std::string name, Corner corner, Alignment alignment, const QColor& color);

    Corner corner() const { return corner_; }
    Alignment alignment() const { return alignment_; }
    const reality::ModelComponent& plane() const { return plane_; }
    Direction openDirection() const { return focus::openDirection(corner_, alignment_); }

    // Shortens the bar to `openLength` and moves it 0.15 outward. Not idempotent: the owner
    // tracks whether the bars are open.
    void open();
    // Lengthens the bar to `length`, moving it back by the amount it was shortened.
    void close();

private:
    void apply(const SegmentPose& pose);
    SegmentPose pose() const { return {position(), scale()}; }

    const Corner corner_;
    const Alignment alignment_;
    const reality::ModelComponent plane_;
};

} // namespace orvanta::focus
