#include "reality/MeshInstances.h"

#include <cassert>

namespace orvanta::reality {

MeshInstances::MeshInstances(std::shared_ptr<const import::InstanceTable> table, const BoundingBox& meshBounds)
    : table_(std::move(table)) {
    assert(table_);
    for (const QMatrix4x4& transform : table_->transforms) bounds_.add(meshBounds.transformed(transform));
}

} // namespace orvanta::reality
