#include "focus/PositionHistory.h"

#include <cassert>

namespace orvanta::focus {

void PositionHistory::record(const QVector3D& position) {
    positions_[next_] = position;
    next_ = (next_ + 1) % kCapacity;
    if (count_ < kCapacity) ++count_;
}

QVector3D PositionHistory::mean() const {
    assert(count_ > 0);
    QVector3D sum;
    for (std::size_t i = 0; i < count_; ++i) sum += positions_[i];
    return sum / static_cast<float>(count_);
}

} // namespace orvanta::focus
