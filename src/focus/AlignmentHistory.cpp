#include "focus/AlignmentHistory.h"

#include <algorithm>

namespace orvanta::focus {

bool AlignmentHistory::record(PlaneAlignment alignment) {
    samples_[next_] = alignment;
    next_ = (next_ + 1) % kCapacity;
    if (count_ < kCapacity) ++count_;

    const std::size_t horizontalHistory = count(PlaneAlignment::horizontal);
    const std::size_t verticalHistory = count(PlaneAlignment::vertical);
    return (alignment == PlaneAlignment::horizontal && horizontalHistory > count_ * 3 / 4) ||
           (alignment == PlaneAlignment::vertical && verticalHistory > count_ / 2);
}

std::size_t AlignmentHistory::count(PlaneAlignment alignment) const {
    return static_cast<std::size_t>(std::count(samples_.begin(), samples_.begin() + count_, alignment));
}

} // namespace orvanta::focus
