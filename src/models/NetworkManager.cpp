#include "models/NetworkManager.h"

#include "core/Dispatch.h"
#include "core/Future.h"
#include "core/Log.h"
#include "core/TemporaryDirectory.h"
#include "models/ARModelError.h"
#include "models/DrawingBudgetCheck.h"
#include "models/ModelEntityLoader.h"
#include "scenegraph/SceneSource.h"

#include <filesystem>
#include <mutex>
#include <set>

namespace orvanta {

namespace {

// True for a regular file at the URL's path. A symbolic link there is never followed: it is
// no cached model, and a download replaces the link itself.
bool fileExists(const core::Url& url) {
    std::error_code ignored;
    return std::filesystem::symlink_status(url.path(), ignored).type() == std::filesystem::file_type::regular;
}

// Moves a finished download to its place in the cache. The body was streamed into a hidden
// file beside it, so an interrupted transfer never leaves a file that would count as cached;
// renaming replaces whatever is at the destination and never writes through a link.
core::Url moveIntoCache(const net::DownloadedFile& download, const core::Url& destination) {
    std::error_code error;
    std::filesystem::rename(download.path(), destination.path(), error);
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(download.path(), ignored); // at once, not when the transfer is freed
        throw core::Error("FileWriteError", error.value(), "Could not write " + destination.path() + ": " + error.message());
    }
    download.keep();
    return destination;
}

// True the first time this process asks about `directory`.
bool firstUse(const std::string& directory) {
    static std::mutex mutex;
    static std::set<std::string> used;
    std::lock_guard lock(mutex);
    return used.insert(directory).second;
}

} // namespace

NetworkManager::NetworkManager() : NetworkManager(net::HttpClient::shared()) {}

NetworkManager::NetworkManager(std::shared_ptr<net::HttpClient> session) : session_(std::move(session)) {}

core::Result<core::Url> NetworkManager::getLocalFileURL(const core::Url& url) const {
    const std::string component = url.lastPathComponent();
    if (component.empty() || component == "." || component == ".." ||
        component.find('/') != std::string::npos || component.find('\0') != std::string::npos)
        return ARModelError::unusableCacheName(component);
    auto directory = core::TemporaryDirectory::url();
    if (!directory) return directory.error();
    return directory->appendingPathComponent(component);
}

core::Publisher<core::Url> NetworkManager::downloadAndCacheModel(const core::Url& from) {
    auto local = getLocalFileURL(from);
    if (!local) return core::Fail<core::Url>(local.error());
    const core::Url destination = local.value();
    const std::string cacheDirectory = std::filesystem::path(destination.path()).parent_path().string();
    // Downloads cut short by the end of their process leave their part files behind.
    if (firstUse(cacheDirectory)) session_->removeStalePartFiles(cacheDirectory);
    if (fileExists(destination)) {
        core::Log::print("File already exists locally: " + destination.path());
        return core::Just(destination);
    }
    // The response status is deliberately not examined: whatever body arrives is the model.
    return session_->download(from, cacheDirectory, onProgress_).tryMap([destination](const net::DownloadedFile& download) {
        moveIntoCache(download, destination);
        core::Log::print("Downloaded and saved model to: " + destination.path());
        return destination;
    });
}

template <class T>
core::Publisher<T> NetworkManager::fetchThenLoad(const std::string& link, const core::Error& invalidLink,
                                                 core::Publisher<T> (NetworkManager::*loadLocal)(const core::Url&)) {
    const auto url = core::Url::fromString(link);
    if (!url) return core::Fail<T>(invalidLink);
    return downloadAndCacheModel(*url).flatMap(
        [self = shared_from_this(), loadLocal](const core::Url& local) { return ((*self).*loadLocal)(local); });
}

core::Publisher<NetworkManager::ModelEntityPtr> NetworkManager::loadModel(const std::string& from) {
    return fetchThenLoad(from, ARModelError::invalidEntityURL(), &NetworkManager::loadModelFromLocalURL);
}

core::Publisher<NetworkManager::ModelEntityPtr> NetworkManager::loadModelFromLocalURL(const core::Url& url) {
    if (!fileExists(url)) return core::Fail<ModelEntityPtr>(ARModelError::fileNotFound(url.path()));
    // The entity load must start on the main queue, and only once subscribed.
    return core::Deferred([url] {
        return core::Just(url).receiveOn(core::Dispatch::main()).flatMap([](const core::Url& u) {
            return ModelEntityLoader::loadModelAsync(u);
        });
    });
}

core::Publisher<NetworkManager::SceneNodePtr> NetworkManager::loadSceneKitModel(const std::string& from) {
    return fetchThenLoad(from, ARModelError::invalidSceneKitURL(), &NetworkManager::loadSceneKitModelFromLocalURL);
}

core::Publisher<NetworkManager::SceneNodePtr> NetworkManager::loadSceneKitModelFromLocalURL(const core::Url& url) {
    if (!url.isFileUrl()) return core::Fail<SceneNodePtr>(ARModelError::notAFileURL());
    if (!fileExists(url)) return core::Fail<SceneNodePtr>(ARModelError::fileNotFound(url.path()));
    // The scene is parsed right here, on the calling thread; the outcome is always delivered
    // on the main queue.
    return core::Future<SceneNodePtr>([url](core::Promise<SceneNodePtr> promise) {
               auto source = scenegraph::SceneSource::make(url);
               if (!source) return promise.fail(ARModelError::sceneSourceUnavailable());
               std::optional<core::Error> tooHeavy;
               auto scene = source->scene([&tooHeavy](const import::ImportedScene& imported) {
                   tooHeavy = DrawingBudgetCheck::check(imported);
                   return tooHeavy;
               });
               if (tooHeavy) return promise.fail(*tooHeavy);
               if (!scene) return promise.fail(ARModelError::sceneUnavailable());
               auto container = scenegraph::SceneNode::make();
               // Moving a child out of the root shrinks the root's list, so take a copy first.
               const auto children = scene->rootNode->childNodes();
               for (const auto& child : children) container->addChildNode(child);
               promise.succeed(container);
           })
        .receiveOn(core::Dispatch::main());
}

} // namespace orvanta
