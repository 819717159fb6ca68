#pragma once
// Mirrors an AR view's entity scene in Quick 3D: one node per entity under a root node,
// with the entity's transform, a model for its mesh, and a contact shadow under the
// content of each plane anchor. An anchor is shown while it is enabled and anchored (so
// plane-anchored content appears once its plane exists); any other entity while enabled.
//
// sync() applies what changed since the last call: entities added, removed, moved to
// another parent or given another model get their nodes made, dropped or rebuilt; every
// node takes its entity's current transform and visibility. A sync that finds no entity
// added, removed or given a new model makes no heap allocation.
// Thread: main thread.

#include "reality/Scene.h"
#include "render/NodeMirror.h"

namespace orvanta::render {

class EntitySceneBridge : public NodeMirror<reality::Entity> {
public:
    using NodeMirror::NodeMirror;

    void sync(const reality::Scene& scene);

private:
    void visit(const std::shared_ptr<reality::Entity>& entity, QQuick3DNode* parent, bool isAnchor);
};

} // namespace orvanta::render
