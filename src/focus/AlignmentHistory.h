#pragma once
// The last twenty alignment samples of the focus square and the vote that settles its
// alignment. A horizontal sample is accepted when more than three quarters of the held
// samples are horizontal, a vertical one when more than half are vertical (integer
// arithmetic, quotients truncated). The asymmetry is deliberate: the square leaves a
// floor for a wall only on a clear majority, and returns to a floor only on a strong one.
// A fixed ring of twenty: recording never allocates.
// Thread: a value type; the owner's thread.

#include "arsession/ARPlaneAnchor.h"

#include <array>
#include <cstddef>

namespace orvanta::focus {

class AlignmentHistory {
public:
    using PlaneAlignment = arsession::ARPlaneAnchor::Alignment;
    static constexpr std::size_t kCapacity = 20;

    // Appends `alignment`, dropping the oldest sample once twenty are held, and returns
    // whether the vote over the held samples accepts it. The first sample is always accepted.
    bool record(PlaneAlignment alignment);

    // Number of held samples equal to `alignment`.
    std::size_t count(PlaneAlignment alignment) const;
    std::size_t count() const { return count_; }

private:
    std::array<PlaneAlignment, kCapacity> samples_{};
    std::size_t next_ = 0;
    std::size_t count_ = 0;
};

} // namespace orvanta::focus
