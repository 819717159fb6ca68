#pragma once
// The most recent hit positions of the focus square, of which the last ten are averaged to
// smooth its movement. A fixed ring of ten: recording never allocates, and older positions
// (which the mean never reads) are dropped.
// Thread: a value type; the owner's thread.

#include <QVector3D>

#include <array>
#include <cstddef>

namespace orvanta::focus {

class PositionHistory {
public:
    static constexpr std::size_t kCapacity = 10;

    // Appends `position` (world space, metres), dropping the oldest once ten are held.
    void record(const QVector3D& position);

    // Arithmetic mean of the held positions (at most the last ten). Asserts one is held.
    QVector3D mean() const;

    std::size_t count() const { return count_; }
    bool isEmpty() const { return count_ == 0; }

private:
    std::array<QVector3D, kCapacity> positions_{};
    std::size_t next_ = 0;
    std::size_t count_ = 0;
};

} // namespace orvanta::focus
