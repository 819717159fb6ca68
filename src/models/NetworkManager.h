#pragma once
// Turns a dish's model link into a ready scene object: an AR entity (loadModel) or a 3D
// viewer node (loadSceneKitModel). Each model file is fetched at most once: it is kept in
// the temporary directory under the link's last path component, and any later link with
// the same last component is answered from that file without a request.
//
// Ownership: always held by a std::shared_ptr; a running load keeps its manager alive.
// Threads: call on the main thread. A cached file's URL is delivered synchronously on
// subscription; a download, its file write and a transfer failure happen on the HTTP
// client's worker thread. Models always arrive on the main queue.

#include "core/Publisher.h"
#include "core/Result.h"
#include "core/Url.h"
#include "net/HttpClient.h"
#include "reality/ModelEntity.h"
#include "scenegraph/SceneNode.h"

#include <memory>
#include <string>

namespace orvanta {

class NetworkManager : public std::enable_shared_from_this<NetworkManager> {
public:
    using ModelEntityPtr = std::shared_ptr<reality::ModelEntity>;
    using SceneNodePtr = std::shared_ptr<scenegraph::SceneNode>;

    // Uses the process-wide HTTP client.
    NetworkManager();
    // Uses `session` for downloads (tests give it a short time-out).
    explicit NetworkManager(std::shared_ptr<net::HttpClient> session);
    virtual ~NetworkManager() = default;

    // The link as an AR entity. Fails with ARModelError 400 "Invalid URL" when `from` is
    // not a URL (nothing is fetched), with transfer and write errors unchanged, with
    // FileExistenceError 404 when the cached file vanished, or with the importer's error
    // (a model beyond the drawing budget is refused with its limitExceeded error).
    virtual core::Publisher<ModelEntityPtr> loadModel(const std::string& from);
    // The link as a container node holding the loaded scene's top-level nodes, in order.
    // Fails with SceneKitError 400 "Invalid URL", transfer and write errors, FileExistenceError
    // 404, SceneKitError 500 when the file is no readable scene, or the importer's
    // limitExceeded error for a model beyond the drawing budget.
    virtual core::Publisher<SceneNodePtr> loadSceneKitModel(const std::string& from);

    // Told how far each download of this manager has got, on the HTTP client's worker thread.
    // Set it before starting loads.
    void setDownloadProgressHandler(net::DownloadProgress::Handler handler) { onProgress_ = std::move(handler); }

protected:
    // The cached file's URL, downloading and writing it first when it is not there yet.
    virtual core::Publisher<core::Url> downloadAndCacheModel(const core::Url& from);
    virtual core::Publisher<ModelEntityPtr> loadModelFromLocalURL(const core::Url& url);
    virtual core::Publisher<SceneNodePtr> loadSceneKitModelFromLocalURL(const core::Url& url);
    // The cache file for a remote URL: the temporary directory plus the last path
    // component. A component that is empty, "." or "..", or holds a '/' or a NUL, could
    // name something outside the cache and is refused, as is an unusable or shared
    // temporary directory (see core::TemporaryDirectory).
    virtual core::Result<core::Url> getLocalFileURL(const core::Url& url) const;

private:
    // Parses `link` (failing with `invalidLink`), fetches it through the cache, then hands
    // the local file to `loadLocal`. The running load keeps this manager alive.
    template <class T>
    core::Publisher<T> fetchThenLoad(const std::string& link, const core::Error& invalidLink,
                                     core::Publisher<T> (NetworkManager::*loadLocal)(const core::Url&));

    std::shared_ptr<net::HttpClient> session_;
    net::DownloadProgress::Handler onProgress_;
};

} // namespace orvanta
