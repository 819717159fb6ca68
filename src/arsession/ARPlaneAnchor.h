#pragma once
// A flat surface found by the session. The anchor's local frame has its y axis along the
// surface normal; the detected area is the rectangle `center` ± `extent` / 2 in the anchor's
// x–z plane. A plane keeps its identifier while it grows; each frame carries the current
// value, so two values are the same plane when their identifiers are equal (== compares
// every field, i.e. the same plane in the same state).
// Units: metres. Thread: a value type, usable on any thread.

#include <QMatrix4x4>
#include <QUuid>
#include <QVector3D>

#include <string_view>
#include <optional>

namespace orvanta::arsession {

class ARPlaneAnchor {
public:
    enum class Alignment { horizontal, vertical };
    enum class Classification { none, wall, floor, ceiling, table, seat, window, door };

    QUuid identifier;
    QMatrix4x4 transform;        // anchor to world
    Alignment alignment = Alignment::horizontal;
    QVector3D center;            // centre of the detected area, anchor space
    QVector3D extent;            // width (x) and length (z) of the detected area; y is 0
    Classification classification = Classification::none;

    // The world position of `center`.
    QVector3D worldCenter() const { return transform.map(center); }

    static std::string_view name(Alignment alignment);
    static std::string_view name(Classification classification);
    static std::optional<Alignment> alignmentNamed(std::string_view text);
    static std::optional<Classification> classificationNamed(std::string_view text);

    friend bool operator==(const ARPlaneAnchor& a, const ARPlaneAnchor& b) {
        return a.identifier == b.identifier && a.transform == b.transform && a.alignment == b.alignment &&
               a.center == b.center && a.extent == b.extent && a.classification == b.classification;
    }
};

} // namespace orvanta::arsession
