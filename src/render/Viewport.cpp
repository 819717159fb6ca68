#include "render/Viewport.h"

#include <QQmlParserStatus>
#include <QtQuick3D/private/qquick3dperspectivecamera_p.h>
#include <QtQuick3D/private/qquick3dsceneenvironment_p.h>
#include <QtQuick3D/private/qquick3dviewport_p.h>

namespace orvanta::render {

Viewport Viewport::make(QQuickItem* parent, const QColor& clearColor) {
    auto* view = new QQuick3DViewport();
    auto* status = static_cast<QQmlParserStatus*>(view);
    status->classBegin();
    view->setParentItem(parent);
    view->setParent(parent);

    auto* environment = new QQuick3DSceneEnvironment(view->scene());
    environment->setBackgroundMode(QQuick3DSceneEnvironment::QQuick3DEnvironmentBackgroundTypes::Color);
    environment->setClearColor(clearColor);
    environment->setAntialiasingMode(QQuick3DSceneEnvironment::QQuick3DEnvironmentAAModeValues::MSAA);
    environment->setAntialiasingQuality(QQuick3DSceneEnvironment::QQuick3DEnvironmentAAQualityValues::Medium);
    view->setEnvironment(environment);

    auto* camera = new QQuick3DPerspectiveCamera();
    camera->setParentItem(view->scene());
    camera->setFieldOfViewOrientation(QQuick3DPerspectiveCamera::Vertical);
    view->setCamera(camera);
    status->componentComplete();
    return {view, camera};
}

} // namespace orvanta::render
