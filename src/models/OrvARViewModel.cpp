#include "models/OrvARViewModel.h"

#include "core/Log.h"

#include <QThread>

namespace orvanta {

namespace {

// The completion handler both loads share: a failure is logged and ends the busy state.
std::function<void(const core::Completion&)> completionHandler(std::weak_ptr<OrvARViewModel> weak) {
    return [weak](const core::Completion& completion) {
        if (completion.isFinished()) {
            core::Log::print("Model loading completed successfully");
            return;
        }
        core::Log::print("Failed to load model: " + completion.failure->description());
        if (auto self = weak.lock()) {
            self->setLoading(false);
            const QString description = QString::fromStdString(completion.failure->localizedDescription());
            const QString domain = QString::fromStdString(completion.failure->domain());
            const int code = completion.failure->code();
            QMetaObject::invokeMethod(
                self.get(), [self, description, domain, code] { emit self->loadFailed(description, domain, code); },
                Qt::QueuedConnection);
        }
    };
}

} // namespace

std::shared_ptr<OrvARViewModel> OrvARViewModel::make(std::shared_ptr<NetworkManager> network) {
    return std::make_shared<OrvARViewModel>(Key{}, std::move(network));
}

OrvARViewModel::OrvARViewModel(Key, std::shared_ptr<NetworkManager> network) { setNetwork(std::move(network)); }

void OrvARViewModel::setNetwork(std::shared_ptr<NetworkManager> network) {
    network_ = std::move(network);
    emit networkChanged();
}

void OrvARViewModel::watchDownloads(NetworkManager& network) {
    // Held weakly: the manager may outlive this view model.
    network.setDownloadProgressHandler([weak = weak_from_this()](const net::DownloadProgress& progress) {
        auto self = weak.lock();
        if (!self) return;
        self->received_.store(progress.received);
        self->expected_.store(progress.expected.value_or(-1));
        QMetaObject::invokeMethod(self.get(), [self] { emit self->downloadProgressChanged(); }, Qt::QueuedConnection);
    });
}

net::DownloadProgress OrvARViewModel::downloadProgress() const {
    const qint64 expected = expected_.load();
    return {received_.load(), expected < 0 ? std::nullopt : std::optional<qint64>(expected)};
}

void OrvARViewModel::setModelEntity(NetworkManager::ModelEntityPtr model) {
    modelEntity_ = std::move(model);
    emit modelEntityChanged();
}

void OrvARViewModel::setScnModel(NetworkManager::SceneNodePtr model) {
    scnModel_ = std::move(model);
    emit scnModelChanged();
}

void OrvARViewModel::setLoading(bool loading) {
    loading_.store(loading);
    if (loading) {
        received_.store(0);
        expected_.store(-1);
    }
    if (QThread::currentThread() == thread()) {
        emit loadingChanged();
        return;
    }
    // Dropped by Qt if the view model is gone before its thread gets to it.
    QMetaObject::invokeMethod(this, [this] { emit loadingChanged(); }, Qt::QueuedConnection);
}

void OrvARViewModel::loadModel(const std::string& link) {
    setLoading(true);
    const auto network = this->network();
    if (!network) return; // stays loading: there is nothing that could end it
    watchDownloads(*network);
    std::weak_ptr<OrvARViewModel> weak = weak_from_this();
    cancellables_.store(network->loadModel(link).sink(completionHandler(weak), [weak](NetworkManager::ModelEntityPtr model) {
        if (auto self = weak.lock()) self->setLoading(false);
        if (auto self = weak.lock()) self->setModelEntity(std::move(model));
    }));
}

void OrvARViewModel::loadScnModel(const std::string& link) {
    setLoading(true);
    const auto network = this->network();
    if (!network) return;
    watchDownloads(*network);
    std::weak_ptr<OrvARViewModel> weak = weak_from_this();
    cancellables_.store(network->loadSceneKitModel(link).sink(completionHandler(weak), [weak](NetworkManager::SceneNodePtr node) {
        if (auto self = weak.lock()) self->setLoading(false);
        core::Log::print("Model loaded scn " + node->description());
        if (auto self = weak.lock()) self->setScnModel(std::move(node));
    }));
}

} // namespace orvanta
