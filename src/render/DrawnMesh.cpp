#include "render/DrawnMesh.h"

#include "render/MeshInstancing.h"

#include <QtQuick3D/private/qquick3dmaterial_p.h>
#include <QtQuick3D/private/qquick3dmodel_p.h>

namespace orvanta::render {

DrawnMesh::DrawnMesh(RenderResources& resources, QQuick3DNode* parent,
                     const std::shared_ptr<const import::ImportedMesh>& mesh,
                     const std::vector<reality::Material>& materials,
                     const std::shared_ptr<const import::InstanceTable>& instances)
    : geometry_(resources.geometry(mesh)), model_(new QQuick3DModel()) {
    model_->setParentItem(parent);
    model_->setGeometry(geometry_.get());
    if (instances) {
        model_->setInstancing(new MeshInstancing(instances, model_));
    }
    // A flat mesh (a plane in its x–z plane, like the focus square's bars or a decal) often
    // lies exactly on a surface; lifted a hair along its normal it does not flicker into it.
    if (geometry_->boundsMax().y() == geometry_->boundsMin().y()) model_->setY(kFlatLift);
    model_->setCastsShadows(false);
    model_->setReceivesShadows(false);
    auto list = model_->materials();
    const int parts = geometry_->partCount();
    for (int part = 0; part < parts; ++part) {
        const reality::Material material =
            std::size_t(part) < materials.size() ? materials[std::size_t(part)] : reality::Material(reality::SimpleMaterial{});
        QQuick3DMaterial* made = resources.materials().make(material, model_, textures_);
        // A mesh marked double-sided shows both faces whatever its material says.
        if (mesh->doubleSided) made->setCullMode(QQuick3DMaterial::NoCulling);
        list.append(&list, made);
    }
}

DrawnMesh::~DrawnMesh() {
    // Textures let go of their pixels first: the pixels may be shared with other meshes and
    // outlive these textures, and a texture does not stop listening to its pixels when it is
    // deleted (pixels that change later would reach a deleted texture).
    for (QQuick3DTexture* texture : model_->findChildren<QQuick3DTexture*>()) texture->setTextureData(nullptr);
    // The model owns its materials; geometry and textures go with the last handle.
    model_->setParentItem(nullptr);
    delete model_;
}

} // namespace orvanta::render
