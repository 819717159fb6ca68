#include "import/ImportedScene.h"

#include <QBuffer>
#include <QImageReader>

#include <algorithm>

namespace orvanta::import {

namespace {

void growBounds(const ImportedScene& scene, int nodeIndex, const QMatrix4x4& parentToRoot,
                Bounds& bounds) {
    const ImportedNode& node = scene.nodes[static_cast<std::size_t>(nodeIndex)];
    const QMatrix4x4 toRoot = parentToRoot * node.localTransform;
    for (int meshIndex : node.meshes) {
        for (const QVector3D& p : scene.meshes[static_cast<std::size_t>(meshIndex)].positions) {
            const QVector3D q = toRoot.map(p);
            if (bounds.empty) {
                bounds = {q, q, false};
                continue;
            }
            bounds.min = {std::min(bounds.min.x(), q.x()), std::min(bounds.min.y(), q.y()),
                          std::min(bounds.min.z(), q.z())};
            bounds.max = {std::max(bounds.max.x(), q.x()), std::max(bounds.max.y(), q.y()),
                          std::max(bounds.max.z(), q.z())};
        }
    }
    for (int child : node.children) growBounds(scene, child, toRoot, bounds);
}

} // namespace

QImage ImportedTexture::decode() const {
    QImage image = QImage::fromData(encoded);
    if (!image.isNull() || !QString::fromStdString(uri).endsWith(".tga", Qt::CaseInsensitive)) return image;
    QBuffer buffer;
    buffer.setData(encoded);
    return QImageReader(&buffer, "tga").read();
}

Bounds ImportedScene::bounds() const {
    Bounds result;
    if (!nodes.empty()) growBounds(*this, 0, QMatrix4x4(), result);
    return result;
}

std::size_t ImportedScene::vertexCount() const {
    std::size_t n = 0;
    for (const ImportedMesh& mesh : meshes) n += mesh.positions.size();
    return n;
}

std::size_t ImportedScene::triangleCount() const {
    std::size_t n = 0;
    for (const ImportedMesh& mesh : meshes) n += mesh.triangleCount();
    return n;
}

} // namespace orvanta::import
