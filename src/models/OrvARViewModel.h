#pragma once
// The dish screen's observable model state: starts a load through its NetworkManager and
// publishes the outcome. `loading` is true from the start of a load until its model or its
// failure arrives; a failure is only logged and leaves the previous model in place.
// Every property notifies its own observers when written.
//
// Ownership: made by make() and held by std::shared_ptr; running loads hold it weakly, so
// a released view model silently drops their results.
// Threads: call on the main thread. Models arrive on the main thread; a failure during the
// download arrives on the HTTP client's worker thread, which writes `loading` there. Change
// signals are always emitted on the view model's own thread, so bindings never see one
// from another thread.

#include "core/CancellableSet.h"
#include "models/NetworkManager.h"

#include <QObject>

#include <atomic>
#include <memory>
#include <string>

namespace orvanta {

class OrvARViewModel : public QObject, public std::enable_shared_from_this<OrvARViewModel> {
    Q_OBJECT
    Q_PROPERTY(bool loading READ loading WRITE setLoading NOTIFY loadingChanged)
    Q_PROPERTY(bool hasModelEntity READ hasModelEntity NOTIFY modelEntityChanged)
    Q_PROPERTY(bool hasScnModel READ hasScnModel NOTIFY scnModelChanged)

    struct Key {
        explicit Key() = default;
    };

public:
    // `network` null: loads set `loading` and do nothing else.
    static std::shared_ptr<OrvARViewModel> make(std::shared_ptr<NetworkManager> network = std::make_shared<NetworkManager>());
    OrvARViewModel(Key, std::shared_ptr<NetworkManager> network);

    std::shared_ptr<NetworkManager> network() const { return network_; }
    void setNetwork(std::shared_ptr<NetworkManager> network);
    NetworkManager::ModelEntityPtr modelEntity() const { return modelEntity_; }
    void setModelEntity(NetworkManager::ModelEntityPtr model);
    NetworkManager::SceneNodePtr scnModel() const { return scnModel_; }
    void setScnModel(NetworkManager::SceneNodePtr model);
    bool loading() const { return loading_.load(); }
    void setLoading(bool loading);
    bool hasModelEntity() const { return modelEntity_ != nullptr; }
    bool hasScnModel() const { return scnModel_ != nullptr; }

    // How far the running load's download has got (zero received while none runs). Any thread.
    net::DownloadProgress downloadProgress() const;

    // Loads `link` for the AR mode; the entity lands in modelEntity.
    void loadModel(const std::string& link);
    // Loads `link` for the 3D mode; the node lands in scnModel.
    void loadScnModel(const std::string& link);

signals:
    void networkChanged();
    void modelEntityChanged();
    void scnModelChanged();
    void loadingChanged();
    // Beside the logged line, a failed load tells its error's message, domain and code here,
    // on the view model's own thread, so a screen can tell the guest what went wrong.
    void loadFailed(const QString& description, const QString& domain, int code);
    // The running download moved on; emitted on the view model's own thread.
    void downloadProgressChanged();

private:
    // Makes `network` report its downloads' progress to this view model.
    void watchDownloads(NetworkManager& network);

    std::shared_ptr<NetworkManager> network_;
    NetworkManager::ModelEntityPtr modelEntity_;
    NetworkManager::SceneNodePtr scnModel_;
    core::CancellableSet cancellables_;
    std::atomic<bool> loading_{false}; // written from the HTTP client's thread on a failure
    // Written on the HTTP client's thread as a download runs; -1 is an undeclared length.
    std::atomic<qint64> received_{0};
    std::atomic<qint64> expected_{-1};
};

} // namespace orvanta
