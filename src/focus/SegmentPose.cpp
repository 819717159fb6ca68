#include "focus/SegmentPose.h"

namespace orvanta::focus {

namespace {
bool isTop(Corner corner) { return corner == Corner::topLeft || corner == Corner::topRight; }
bool isLeft(Corner corner) { return corner == Corner::topLeft || corner == Corner::bottomLeft; }

float length(const QVector3D& scale, Alignment alignment) {
    return alignment == Alignment::horizontal ? scale.x() : scale.z();
}
QVector3D withLength(QVector3D scale, Alignment alignment, float length) {
    (alignment == Alignment::horizontal ? scale[0] : scale[2]) = length;
    return scale;
}
} // namespace

Direction reversed(Direction direction) {
    switch (direction) {
    case Direction::up: return Direction::down;
    case Direction::down: return Direction::up;
    case Direction::left: return Direction::right;
    case Direction::right: return Direction::left;
    }
    return direction;
}

Direction openDirection(Corner corner, Alignment alignment) {
    if (alignment == Alignment::horizontal) return isLeft(corner) ? Direction::left : Direction::right;
    return isTop(corner) ? Direction::up : Direction::down;
}

QVector3D offsetPosition(const QVector3D& position, float offset, Direction direction) {
    QVector3D moved = position;
    switch (direction) {
    case Direction::up: moved[2] -= offset; break;
    case Direction::down: moved[2] += offset; break;
    case Direction::left: moved[0] -= offset; break;
    case Direction::right: moved[0] += offset; break;
    }
    return moved;
}

QVector3D closedScale(Alignment alignment) {
    return alignment == Alignment::horizontal ? QVector3D(kSegmentLength, 1.0f, kSegmentThickness)
                                              : QVector3D(kSegmentThickness, 1.0f, kSegmentLength);
}

QVector3D cornerPosition(Corner corner, Alignment alignment) {
    const float x = isLeft(corner) ? -0.5f : 0.5f;
    const float z = isTop(corner) ? -0.5f : 0.5f;
    const float halfLength = kSegmentLength / 2.0f;
    return alignment == Alignment::horizontal ? QVector3D(x > 0 ? halfLength : -halfLength, 0.0f, z)
                                              : QVector3D(x, 0.0f, z > 0 ? halfLength : -halfLength);
}

SegmentPose opened(const SegmentPose& pose, Corner corner, Alignment alignment) {
    const float offset = kSegmentLength / 2.0f - kSegmentOpenLength / 2.0f;
    return {offsetPosition(pose.position, offset, openDirection(corner, alignment)),
            withLength(pose.scale, alignment, kSegmentOpenLength)};
}

SegmentPose closed(const SegmentPose& pose, Corner corner, Alignment alignment) {
    const float before = length(pose.scale, alignment);
    const float offset = before / -2.0f + kSegmentLength / 2.0f;
    return {offsetPosition(pose.position, offset, reversed(openDirection(corner, alignment))),
            withLength(pose.scale, alignment, kSegmentLength)};
}

} // namespace orvanta::focus
