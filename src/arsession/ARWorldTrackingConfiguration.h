#pragma once
// What a world-tracking session looks for. By default no planes are detected.
// Thread: a value type.

namespace orvanta::arsession {

class ARWorldTrackingConfiguration {
public:
    // Option set; raw values 1 (horizontal) and 2 (vertical).
    enum PlaneDetection : unsigned { none = 0, horizontal = 1, vertical = 2 };

    unsigned planeDetection = none;

    bool detects(PlaneDetection kind) const { return (planeDetection & kind) != 0; }
};

} // namespace orvanta::arsession
