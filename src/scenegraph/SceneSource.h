#pragma once
// Opens a model file for the 3D viewer. Making a source fails when the file cannot be read
// or is no model format the kit knows; asking it for the scene fails when the contents
// cannot be imported.
// Thread: any; a source is used by one thread at a time.

#include "core/Error.h"
#include "core/Url.h"
#include "scenegraph/Scene.h"

#include <optional>

namespace orvanta::scenegraph {

class SceneSource {
public:
    static std::optional<SceneSource> make(const core::Url& url);

    // The whole scene, or nothing when the file cannot be imported (see lastError()).
    std::optional<Scene> scene();
    const std::optional<core::Error>& lastError() const { return lastError_; }

private:
    explicit SceneSource(std::string path) : path_(std::move(path)) {}

    std::string path_;
    std::optional<core::Error> lastError_;
};

} // namespace orvanta::scenegraph
