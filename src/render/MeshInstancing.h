#pragma once
// An instance table as Quick 3D instancing: one entry per copy with its transform and colour
// (white where the table has none), laid out once, when Quick 3D first asks for it.
// Thread: main thread (a Quick 3D object); the buffer is made while the render thread syncs.

#include "import/ImportedScene.h"

#include <QByteArray>
#include <QQuick3DInstancing>

#include <memory>

namespace orvanta::render {

class MeshInstancing : public QQuick3DInstancing {
    Q_OBJECT

public:
    // Contract: `table` is non-null.
    explicit MeshInstancing(std::shared_ptr<const import::InstanceTable> table, QQuick3DObject* parent = nullptr);

protected:
    QByteArray getInstanceBuffer(int* instanceCount) override;

private:
    std::shared_ptr<const import::InstanceTable> table_;
    QByteArray buffer_;
};

} // namespace orvanta::render
