#include "render/Viewport.h"

#include <QQmlParserStatus>
#include <QtQuick/private/qquickrectangle_p.h>
#include <QtQuick3D/private/qquick3dperspectivecamera_p.h>
#include <QtQuick3D/private/qquick3dsceneenvironment_p.h>
#include <QtQuick3D/private/qquick3dviewport_p.h>

namespace orvanta::render {

Viewport Viewport::make(QQuickItem* parent, const QColor& background, QQuick3DCamera* camera) {
    // The background: a plain rectangle under every other child of `parent`, sized with it.
    auto* backdrop = new QQuickRectangle(parent);
    backdrop->setColor(background);
    backdrop->setZ(-2);
    const auto fit = [parent, backdrop] { backdrop->setSize(parent->size()); };
    QObject::connect(parent, &QQuickItem::widthChanged, backdrop, fit);
    QObject::connect(parent, &QQuickItem::heightChanged, backdrop, fit);
    fit();

    auto* view = new QQuick3DViewport();
    auto* status = static_cast<QQmlParserStatus*>(view);
    status->classBegin();
    view->setParentItem(parent);
    view->setParent(parent);

    auto* environment = new QQuick3DSceneEnvironment(view->scene());
    environment->setBackgroundMode(QQuick3DSceneEnvironment::QQuick3DEnvironmentBackgroundTypes::Transparent);
    // Edges are smoothed over the frames that follow a change (progressive antialiasing), not
    // by multisampling every frame: on a software rasteriser multisampling shades every sample
    // and doubled the cost of each frame, while a moving picture hides jagged edges anyway and a
    // still one (and its snapshot) is smoothed within a few frames.
    environment->setAntialiasingMode(QQuick3DSceneEnvironment::QQuick3DEnvironmentAAModeValues::ProgressiveAA);
    environment->setAntialiasingQuality(QQuick3DSceneEnvironment::QQuick3DEnvironmentAAQualityValues::Medium);
    view->setEnvironment(environment);

    QQuick3DPerspectiveCamera* perspective = nullptr;
    if (!camera) {
        perspective = new QQuick3DPerspectiveCamera();
        perspective->setFieldOfViewOrientation(QQuick3DPerspectiveCamera::Vertical);
        camera = perspective;
    }
    camera->setParentItem(view->scene());
    view->setCamera(camera);
    status->componentComplete();
    return {view, perspective, backdrop};
}

} // namespace orvanta::render
