#pragma once
// The errors the model loaders make themselves. Each is a platform error value with one of
// four domains, an HTTP-like code and one message; errors of the transfer, the file system
// and the importers are passed through unchanged instead.
// Thread: any.

#include "core/Error.h"

#include <string>

namespace orvanta {

class ARModelError {
public:
    static core::Error invalidEntityURL();                       // "ARModelError" 400
    static core::Error invalidSceneKitURL();                     // "SceneKitError" 400
    static core::Error notAFileURL();                            // "InvalidURLError" 400
    static core::Error fileNotFound(const std::string& path);    // "FileExistenceError" 404
    static core::Error sceneSourceUnavailable();                 // "SceneKitError" 500
    static core::Error sceneUnavailable();                       // "SceneKitError" 500
    // The link's last path component cannot name a file in the cache directory.
    static core::Error unusableCacheName(const std::string& component); // "ARModelError" 400
};

} // namespace orvanta
