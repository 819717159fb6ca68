#pragma once
// What the machine's OpenGL offers, found out once with a throw-away context: whether a
// context can be made at all (Quick 3D needs one; without a display or a GL driver there is
// none) and whether half-float render targets exist.
// Thread: main thread, after the application object exists.

#include <string>

namespace orvanta::render {

class GlSupport {
public:
    static bool canCreateContext();
    static bool hasHalfFloatTargets();
    // One line that says why no context can be made, for tools and skipped tests.
    static std::string unavailableReason();
};

} // namespace orvanta::render
