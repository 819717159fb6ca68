#pragma once
// A session backend for a camera that stands still over a table card whose pose is already
// known (CardLocator::locateInPicture on a photo): every frame is that camera, tracking
// normal, with the next of its pictures in turn (one picture: a still photo) and the card's
// table, one horizontal plane centred on the card. Ray casts hit that plane as they hit the
// simulated world's. orvanta-render draws a dish on a photo through it; tests and benchmarks
// use it to draw over pictures whose camera they know exactly.
// Thread: the session's clock queue.

#include "arsession/SessionBackend.h"

#include <QImage>
#include <QSizeF>

#include <memory>
#include <vector>

namespace orvanta {

class StillCameraBackend final : public arsession::SessionBackend {
public:
    // `camera` must carry the pictures' lens and size; `table` is the plane's width and depth
    // in metres.
    StillCameraBackend(const arsession::ARCamera& camera, std::vector<std::shared_ptr<const QImage>> pictures,
                       QSizeF table);

    void run(const arsession::ARWorldTrackingConfiguration&, bool, bool, double) override {}
    void pause(double) override {}
    void poll(double time, Update& update) override;
    void raycast(const arsession::ARRaycastQuery& query, const arsession::ARFrame& frame,
                 std::vector<arsession::ARRaycastResult>& results) const override;

private:
    arsession::ARFrame frame_;
    std::vector<std::shared_ptr<const QImage>> pictures_;
    std::size_t next_ = 0;
};

} // namespace orvanta
