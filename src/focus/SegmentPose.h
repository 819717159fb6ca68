#pragma once
// Where one bar of the classic focus square sits and how long it is, and the pure moves
// that open and close it. The square lies in the x–z plane with edge 1 (before the focus
// indicator's own scale); "up" is −z, "left" is −x. A bar's length is its scale along the
// axis it runs on (x for a horizontal bar, z for a vertical one).
// Thread: pure functions over values; any thread.

#include <QVector3D>

#include <array>
#include <utility>

namespace orvanta::focus {

enum class Corner { topLeft, topRight, bottomRight, bottomLeft };
enum class Alignment { horizontal, vertical };
enum class Direction { up, down, left, right };

// up↔down, left↔right.
Direction reversed(Direction direction);

// The way a bar moves when it opens: outward along its own axis, away from the edge's middle.
Direction openDirection(Corner corner, Alignment alignment);

// `position` moved by `offset` (square units): up −z, down +z, left −x, right +x.
QVector3D offsetPosition(const QVector3D& position, float offset, Direction direction);

struct SegmentPose {
    QVector3D position;
    QVector3D scale;
    friend bool operator==(const SegmentPose&, const SegmentPose&) = default;
};

inline constexpr float kSegmentThickness = 0.018f;
inline constexpr float kSegmentLength = 0.5f;
inline constexpr float kSegmentOpenLength = 0.2f;

// The (corner, alignment) pairs of the eight bars, in the order the classic square makes them.
inline constexpr std::array<std::pair<Corner, Alignment>, 8> kClassicSegmentLayout{{
    {Corner::topLeft, Alignment::horizontal},
    {Corner::topRight, Alignment::horizontal},
    {Corner::topLeft, Alignment::vertical},
    {Corner::topRight, Alignment::vertical},
    {Corner::bottomLeft, Alignment::vertical},
    {Corner::bottomRight, Alignment::vertical},
    {Corner::bottomLeft, Alignment::horizontal},
    {Corner::bottomRight, Alignment::horizontal},
}};

// Scale of a closed bar: length 0.5 along its axis, thickness 0.018 across, 1 along y.
QVector3D closedScale(Alignment alignment);

// Position of a closed bar at its corner: it covers half of its edge, from the corner to the
// edge's middle, so the eight closed bars join into the whole outline.
QVector3D cornerPosition(Corner corner, Alignment alignment);

// The bar shortened to 0.2 and moved 0.15 in its open direction (half the length lost), so it
// still ends at its corner. Opening an open bar moves it a further 0.15.
SegmentPose opened(const SegmentPose& pose, Corner corner, Alignment alignment);

// The bar lengthened to 0.5 and moved by (0.25 − L/2) against its open direction, L being its
// length before: an opened bar returns to where it was, a closed bar stays put.
SegmentPose closed(const SegmentPose& pose, Corner corner, Alignment alignment);

} // namespace orvanta::focus
