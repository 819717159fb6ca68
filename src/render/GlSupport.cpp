#include "render/GlSupport.h"

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>

namespace orvanta::render {

namespace {

struct Probe {
    bool context = false;
    bool halfFloat = false;
    std::string reason;
};

const Probe& probe() {
    static const Probe result = [] {
        Probe p;
        if (!QGuiApplication::instance()) {
            p.reason = "no QGuiApplication exists";
            return p;
        }
        const QString platform = QGuiApplication::platformName();
        if (platform == "offscreen" || platform == "minimal") {
            p.reason = "the Qt platform '" + platform.toStdString() +
                       "' draws no 3D; run under a display, e.g. xvfb-run -a -s \"-screen 0 1280x800x24\"";
            return p;
        }
        QOpenGLContext context;
        QOffscreenSurface surface;
        surface.create();
        if (!context.create() || !context.makeCurrent(&surface)) {
            p.reason = "no OpenGL context can be made on platform '" + platform.toStdString() +
                       "'; run under a display with OpenGL, e.g. xvfb-run -a -s \"-screen 0 1280x800x24\"";
            return p;
        }
        p.context = true;
        const QSurfaceFormat format = context.format();
        p.halfFloat = format.majorVersion() >= 3 || context.hasExtension("GL_ARB_half_float_pixel") ||
                      context.hasExtension("GL_OES_texture_half_float");
        context.doneCurrent();
        return p;
    }();
    return result;
}

} // namespace

void GlSupport::allowStartWithoutDisplay() {
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) return;
    // A display that is named but cannot be opened falls back as well (Qt tries the list in order).
    if (!qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "xcb;offscreen");
    else if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) qputenv("QT_QPA_PLATFORM", "wayland;offscreen");
    else qputenv("QT_QPA_PLATFORM", "offscreen");
}

bool GlSupport::canCreateContext() { return probe().context; }
bool GlSupport::hasHalfFloatTargets() { return probe().halfFloat; }
std::string GlSupport::unavailableReason() { return probe().reason; }

} // namespace orvanta::render
