#include "models/ARModelError.h"

namespace orvanta {

core::Error ARModelError::invalidEntityURL() { return {"ARModelError", 400, "Invalid URL"}; }

core::Error ARModelError::invalidSceneKitURL() { return {"SceneKitError", 400, "Invalid URL"}; }

core::Error ARModelError::notAFileURL() { return {"InvalidURLError", 400, "URL must be a file URL."}; }

core::Error ARModelError::fileNotFound(const std::string& path) {
    return {"FileExistenceError", 404, "File not found at " + path};
}

core::Error ARModelError::sceneSourceUnavailable() {
    return {"SceneKitError", 500, "Unable to create a SceneSource from the file."};
}

core::Error ARModelError::sceneUnavailable() {
    return {"SceneKitError", 500, "Unable to load a scene from the SceneSource."};
}

core::Error ARModelError::unusableCacheName(const std::string& component) {
    return {"ARModelError", 400, "The model link has no usable file name: \"" + component + "\""};
}

} // namespace orvanta
