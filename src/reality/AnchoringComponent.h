#pragma once
// Where a scene anchor attaches: a fixed world transform, the camera, or the first plane
// the session detects with the wanted alignment, classification and minimum size.
// Units: metres. Thread: a value type.

#include "arsession/ARPlaneAnchor.h"

#include <QMatrix4x4>
#include <QVector2D>

#include <optional>

namespace orvanta::reality {

class AnchoringComponent {
public:
    enum class Kind { world, camera, plane };

    // Any classification, or one.
    struct Classification {
        std::optional<arsession::ARPlaneAnchor::Classification> only; // none = any
        static Classification any() { return {}; }
        bool accepts(arsession::ARPlaneAnchor::Classification c) const { return !only || *only == c; }
    };

    static AnchoringComponent world(const QMatrix4x4& transform = QMatrix4x4()) {
        return AnchoringComponent(Kind::world, transform, {}, {}, {});
    }
    static AnchoringComponent camera() { return AnchoringComponent(Kind::camera, {}, {}, {}, {}); }
    // `minimumBounds` = (x, z): the plane's detected extent must reach both.
    static AnchoringComponent plane(arsession::ARPlaneAnchor::Alignment alignment, Classification classification,
                                    QVector2D minimumBounds) {
        return AnchoringComponent(Kind::plane, {}, alignment, classification, minimumBounds);
    }

    Kind kind() const { return kind_; }
    const QMatrix4x4& worldTransform() const { return world_; }
    arsession::ARPlaneAnchor::Alignment alignment() const { return alignment_; }
    const Classification& classification() const { return classification_; }
    QVector2D minimumBounds() const { return minimumBounds_; }

    // Whether a plane target accepts `plane` (alignment, classification, extent ≥ bounds).
    bool accepts(const arsession::ARPlaneAnchor& plane) const;

private:
    AnchoringComponent(Kind kind, QMatrix4x4 world, arsession::ARPlaneAnchor::Alignment alignment,
                       Classification classification, QVector2D minimumBounds)
        : kind_(kind), world_(world), alignment_(alignment), classification_(classification),
          minimumBounds_(minimumBounds) {}

    Kind kind_;
    QMatrix4x4 world_;
    arsession::ARPlaneAnchor::Alignment alignment_ = arsession::ARPlaneAnchor::Alignment::horizontal;
    Classification classification_;
    QVector2D minimumBounds_;
};

} // namespace orvanta::reality
