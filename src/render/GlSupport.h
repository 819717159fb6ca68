#pragma once
// What the machine's OpenGL offers, found out once with a throw-away context: whether a
// context can be made at all (Quick 3D needs one; without a display or a GL driver there is
// none) and whether half-float render targets exist.
// Thread: main thread, after the application object exists (allowStartWithoutDisplay: before).

#include <string>

namespace orvanta::render {

class GlSupport {
public:
    // For programs that draw but must answer --help and --version anywhere: lets the
    // application object start on Qt's offscreen platform when no display is named (where Qt
    // would abort), so that canCreateContext() says no instead. Call before the
    // QGuiApplication exists; a platform chosen in QT_QPA_PLATFORM is kept.
    static void allowStartWithoutDisplay();
    static bool canCreateContext();
    static bool hasHalfFloatTargets();
    // One line that says why no context can be made, for tools and skipped tests.
    static std::string unavailableReason();
};

} // namespace orvanta::render
