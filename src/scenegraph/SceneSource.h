#pragma once
// Opens a model file for the 3D viewer. Making a source fails when the file cannot be read
// or is no model format the kit knows; asking it for the scene fails when the contents
// cannot be imported.
// Thread: any; a source is used by one thread at a time.

#include "core/Error.h"
#include "core/Url.h"
#include "scenegraph/Scene.h"

#include <functional>
#include <optional>

namespace orvanta::scenegraph {

class SceneSource {
public:
    static std::optional<SceneSource> make(const core::Url& url);

    // Whether an imported scene may be shown: an error refuses it.
    using Vetting = std::function<std::optional<core::Error>(const import::ImportedScene&)>;

    // The whole scene, or nothing when the file cannot be imported or `vet` refuses what was
    // imported before any node is made (see lastError()).
    std::optional<Scene> scene(const Vetting& vet = nullptr);
    const std::optional<core::Error>& lastError() const { return lastError_; }

private:
    explicit SceneSource(std::string path) : path_(std::move(path)) {}

    std::string path_;
    std::optional<core::Error> lastError_;
};

} // namespace orvanta::scenegraph
