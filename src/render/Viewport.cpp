#include "render/Viewport.h"

#include <QQmlParserStatus>
#include <QQuickWindow>

#include <memory>
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

void Viewport::retire(QQuick3DViewport* view) {
    QQuickWindow* window = view->window();
    if (!window) {
        delete view;
        return;
    }
    view->setParent(nullptr);
    view->setParentItem(window->contentItem());
    view->setOpacity(0.0);
    view->setEnabled(false);
    constexpr int framesToDrawFirst = 3;
    auto frames = std::make_shared<int>(0);
    QObject::connect(window, &QQuickWindow::afterAnimating, view, [view, window, frames] {
        if (++*frames >= framesToDrawFirst) view->deleteLater();
        else window->update();
    });
    // The window owns the view from now on if it goes first.
    QObject::connect(window, &QObject::destroyed, view, [view] { delete view; });
    window->update();
}

} // namespace orvanta::render
