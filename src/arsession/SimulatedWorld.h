#pragma once
// A deterministic stand-in for a phone's tracker: a room with a floor (y = 0), a table top
// 0.75 m high and a wall, seen by a hand-held camera about 1.4 m high that looks down
// toward the table and sways a little. Tracking starts not available, becomes
// limited(initializing) and then normal after the script's delays; planes are discovered
// after delays and grow to their full size; estimated-plane ray casts hit the room's true
// surfaces before any plane is known. Interruptions and failures happen at scripted times.
// Everything follows the session clock, so the same steps give the same frames.
//
// Units: metres, seconds, radians. Thread: the session's clock queue (see SessionBackend).

#include "arsession/ARPlaneAnchor.h"
#include "arsession/SessionBackend.h"
#include "core/Error.h"

#include <QMatrix4x4>
#include <QVector2D>
#include <QVector3D>

#include <array>
#include <vector>

namespace orvanta::arsession {

class SimulatedWorld final : public SessionBackend {
public:
    // A flat, rectangular surface of the room. Its frame has y along the normal; the
    // surface covers ± size / 2 along its local x and z axes around the origin.
    struct Surface {
        QUuid identifier;
        QMatrix4x4 transform; // surface to world, rigid
        float width = 0.0f;   // along local x
        float depth = 0.0f;   // along local z
        ARPlaneAnchor::Alignment alignment = ARPlaneAnchor::Alignment::horizontal;
        ARPlaneAnchor::Classification classification = ARPlaneAnchor::Classification::none;
        double discoveredAfter = 0.0; // seconds after tracking becomes normal
    };

    struct Interruption {
        double begin = 0.0; // session clock seconds
        double end = 0.0;
    };
    struct Failure {
        double time = 0.0; // session clock seconds
        core::Error error;
    };

    struct Script {
        double notAvailableFor = 0.2;    // after run: tracking not available
        double initializingFor = 1.0;    // then limited(initializing) for this long, then normal
        double relocalizingFor = 0.5;    // limited(relocalizing) after an interruption or a resume
        double planeGrowthDuration = 2.0; // from first sight to full size
        float initialPlaneSize = 0.1f;   // edge of a plane when first seen (capped by its full size)
        float swayAmplitude = 0.02f;     // hand sway of the camera position
        std::vector<Interruption> interruptions;
        std::vector<Failure> failures;
    };

    // The default room: floor 4 m × 4 m, table top 1.2 m × 0.8 m at 0.75 m centred 0.6 m ahead
    // of the start position, wall 2 m ahead. Table found 0.5 s, floor 1.5 s, wall 2.5 s after
    // tracking becomes normal.
    static std::vector<Surface> defaultRoom();

    // The default script in the default room.
    SimulatedWorld();
    explicit SimulatedWorld(Script script, std::vector<Surface> surfaces = defaultRoom());

    void run(const ARWorldTrackingConfiguration& configuration, bool resetTracking, bool removeExistingAnchors,
             double time) override;
    void pause(double time) override;
    void poll(double time, Update& update) override;
    void raycast(const ARRaycastQuery& query, const ARFrame& frame,
                 std::vector<ARRaycastResult>& results) const override;

    const std::vector<Surface>& surfaces() const { return surfaces_; }

    // Camera pose of the scripted path at `seconds` after the world started (pure).
    static QMatrix4x4 cameraPose(double seconds, float swayAmplitude);
    // Detected size (width, depth) of `surface` `seconds` after it was first seen (pure).
    static QVector2D detectedSize(const Surface& surface, double seconds, float initialSize, double growthDuration);

private:
    TrackingState trackingAt(double time) const;
    bool detects(const Surface& surface) const;
    void fillPlanes(double time, std::vector<ARPlaneAnchor>& anchors) const;

    Script script_;
    std::vector<Surface> surfaces_;
    ARWorldTrackingConfiguration configuration_;
    bool running_ = false;
    bool interrupted_ = false;
    double worldStart_ = -1.0;   // first run: origin of the camera path
    double trackingStart_ = 0.0; // start of the not-available → initializing → normal sequence
    double relocalizeFrom_ = -1.0; // start of a relocalizing phase, or < 0
    double planesFrom_ = 0.0;     // plane discovery clock origin (moved by removeExistingAnchors)
    double lastPoll_ = -1.0;
    std::size_t nextInterruption_ = 0;
    std::size_t nextFailure_ = 0;
};

} // namespace orvanta::arsession
