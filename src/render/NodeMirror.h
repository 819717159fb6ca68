#pragma once
// The bookkeeping shared by the bridges that mirror a tree of the kit's nodes (entities,
// scene nodes) in Quick 3D: one record per source node with its Quick 3D node, the mesh it
// draws and the revision of the source's mesh that was built. Each sync marks the records it
// reaches; what it did not reach is dropped at the end. Reaching a known node makes no heap
// allocation.
// Thread: main thread.

#include "render/ContactShadow.h"
#include "render/DrawnMesh.h"

#include <QString>
#include <QtQuick3D/private/qquick3dnode_p.h>

#include <cstdint>
#include <memory>
#include <unordered_map>

namespace orvanta::render {

template <class Source>
class NodeMirror {
public:
    NodeMirror(RenderResources& resources, QQuick3DNode* root) : resources_(resources), root_(root) {
        records_.reserve(64);
    }
    ~NodeMirror() {
        for (auto& entry : records_) drop(entry.second);
    }
    NodeMirror(const NodeMirror&) = delete;
    NodeMirror& operator=(const NodeMirror&) = delete;

    // The node mirroring `source`, or null when the last sync did not reach it.
    QQuick3DNode* node(const Source* source) const {
        const auto it = records_.find(source);
        return it == records_.end() ? nullptr : it->second.node;
    }
    std::size_t nodeCount() const { return records_.size(); }

protected:
    struct Record {
        std::weak_ptr<const Source> source;
        QQuick3DNode* node = nullptr;
        std::unique_ptr<DrawnMesh> mesh;
        std::uint64_t meshRevision = 0;
        std::unique_ptr<ContactShadow> shadow;
        std::uint32_t seen = 0;
    };

    RenderResources& resources() { return resources_; }
    QQuick3DNode* root() const { return root_; }

    void beginSync() { ++generation_; }
    // Drops the records of the nodes this sync did not reach.
    void endSync() {
        for (auto it = records_.begin(); it != records_.end();) {
            if (it->second.seen == generation_) {
                ++it;
            } else {
                drop(it->second);
                it = records_.erase(it);
            }
        }
    }

    // The record of `source`, made on first sight, marked as reached and hung under `parent`.
    // Whether its mesh must be rebuilt is for the caller to check against `meshRevision`.
    Record& reach(const std::shared_ptr<Source>& source, const std::string& name, QQuick3DNode* parent) {
        auto [it, inserted] = records_.try_emplace(source.get());
        Record& record = it->second;
        // An address can come back for a new node once the old one is gone.
        if (!inserted && record.source.expired()) {
            drop(record);
            record = Record{};
            inserted = true;
        }
        if (inserted) {
            record.source = source;
            record.node = new QQuick3DNode();
            record.node->setObjectName(QString::fromStdString(name));
            record.meshRevision = ~std::uint64_t(0);
        }
        record.seen = generation_;
        if (record.node->parentNode() != parent) record.node->setParentItem(parent);
        return record;
    }

private:
    static void drop(Record& record) {
        record.shadow.reset();
        record.mesh.reset();
        if (record.node) {
            record.node->setParentItem(nullptr);
            delete record.node;
            record.node = nullptr;
        }
    }

    RenderResources& resources_;
    QQuick3DNode* root_;
    std::unordered_map<const Source*, Record> records_;
    std::uint32_t generation_ = 0;
};

} // namespace orvanta::render
