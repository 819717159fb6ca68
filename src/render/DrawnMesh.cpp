#include "render/DrawnMesh.h"

#include <QtQuick3D/private/qquick3dmodel_p.h>

namespace orvanta::render {

DrawnMesh::DrawnMesh(RenderResources& resources, QQuick3DNode* parent,
                     const std::shared_ptr<const import::ImportedMesh>& mesh,
                     const std::vector<reality::Material>& materials)
    : geometry_(resources.geometry(mesh)), model_(new QQuick3DModel()) {
    model_->setParentItem(parent);
    model_->setGeometry(geometry_.get());
    model_->setCastsShadows(false);
    model_->setReceivesShadows(false);
    auto list = model_->materials();
    const int parts = geometry_->partCount();
    for (int part = 0; part < parts; ++part) {
        const reality::Material material =
            std::size_t(part) < materials.size() ? materials[std::size_t(part)] : reality::Material(reality::SimpleMaterial{});
        list.append(&list, resources.materials().make(material, model_, textures_));
    }
}

DrawnMesh::~DrawnMesh() {
    // The model owns its materials; geometry and textures go with the last handle.
    model_->setParentItem(nullptr);
    delete model_;
}

} // namespace orvanta::render
