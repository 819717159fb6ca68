#pragma once
// The copies an entity draws of its mesh: one per entry of an instance table, each placed in
// the entity's space, with the bounds of the mesh over all of them (measured once).
// Units: metres. Thread: immutable after creation, shareable between threads.

#include "import/ImportedScene.h"
#include "reality/BoundingBox.h"

#include <memory>

namespace orvanta::reality {

class MeshInstances {
public:
    // Contract: `table` is non-null; `meshBounds` are the mesh's bounds in its own space.
    MeshInstances(std::shared_ptr<const import::InstanceTable> table, const BoundingBox& meshBounds);

    const import::InstanceTable& table() const { return *table_; }
    const std::shared_ptr<const import::InstanceTable>& sharedTable() const { return table_; }
    std::size_t count() const { return table_->size(); }
    // The mesh at every copy, in the entity's space.
    const BoundingBox& bounds() const { return bounds_; }

private:
    std::shared_ptr<const import::InstanceTable> table_;
    BoundingBox bounds_;
};

} // namespace orvanta::reality
