#include "ModelsFixture.h"

#include "models/OrvARViewModel.h"

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <atomic>

using namespace orvanta;
using namespace orvanta::testing;

using OrvARViewModelLoads = ModelsFixture;

// A download reports its bytes received of the declared length on the view model's thread;
// loading is cleared before the node is published.
TEST_F(OrvARViewModelLoads, SceneLoadReportsItsProgressAndClearsLoadingBeforePublishingTheNode) {
    serveModel("/soup.glb", 2);
    auto model = OrvARViewModel::make(network_);
    std::vector<std::string> order;
    std::vector<qint64> received;
    QObject::connect(model.get(), &OrvARViewModel::loadingChanged, [&] { order.push_back(model->loading() ? "loading" : "idle"); });
    QObject::connect(model.get(), &OrvARViewModel::scnModelChanged, [&] { order.push_back("scnModel"); });
    QObject::connect(model.get(), &OrvARViewModel::modelEntityChanged, [&] { order.push_back("modelEntity"); });
    QObject::connect(model.get(), &OrvARViewModel::downloadProgressChanged, [&] {
        EXPECT_EQ(QThread::currentThread(), model->thread());
        received.push_back(model->downloadProgress().received);
    });
    model->loadScnModel(server_.url("/soup.glb"));
    ASSERT_TRUE(main_->runUntil([&] {
        QCoreApplication::processEvents();
        return model->scnModel() != nullptr && log_.lines().size() == 3;
    }));
    EXPECT_EQ(order, (std::vector<std::string>{"loading", "idle", "scnModel"}));
    EXPECT_EQ(log_.lines(), (std::vector<std::string>{"Downloaded and saved model to: " + cachePath("soup.glb"),
                                                      "Model loaded scn " + model->scnModel()->description(),
                                                      "Model loading completed successfully"}));
    const qint64 size = TestModels::glbWithNodes(2).size();
    EXPECT_EQ(model->downloadProgress().received, size);
    EXPECT_EQ(model->downloadProgress().expected, size);
    ASSERT_FALSE(received.empty());
    EXPECT_TRUE(std::is_sorted(received.begin(), received.end()));
}

TEST_F(OrvARViewModelLoads, EntityLoadPublishesTheEntityAndKeepsItAfterALaterFailure) {
    TestModels::write(cachePath("cake.glb"), TestModels::glbWithNodes(1));
    auto model = OrvARViewModel::make(network_);
    model->loadModel(server_.url("/cake.glb"));
    EXPECT_TRUE(model->loading());
    ASSERT_TRUE(main_->runUntil([&] { return !model->loading(); }));
    const auto entity = model->modelEntity();
    ASSERT_NE(entity, nullptr);
    // An invalid link logs its error and ends loading before the call returns.
    model->loadModel("");
    EXPECT_FALSE(model->loading());
    EXPECT_EQ(model->modelEntity(), entity);
    EXPECT_EQ(log_.lines().back(), "Failed to load model: Error Domain=ARModelError Code=400 \"Invalid URL\" "
                                   "UserInfo={NSLocalizedDescription=Invalid URL}");
}

TEST_F(OrvARViewModelLoads, WithoutANetworkLoadingStaysOn) {
    auto model = OrvARViewModel::make(nullptr);
    model->loadModel(server_.url("/anything.glb"));
    main_->advance(60);
    EXPECT_TRUE(model->loading());
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(OrvARViewModelLoads, ReleasedViewModelDropsTheResult) {
    TestModels::write(cachePath("late.glb"), TestModels::glbWithNodes(1));
    auto model = OrvARViewModel::make(network_);
    model->loadModel(server_.url("/late.glb"));
    std::weak_ptr<OrvARViewModel> weak = model;
    model.reset();
    EXPECT_TRUE(weak.expired());
    // The load's first hop queues the import on the (serial) background queue; a marker
    // queued behind it runs once the import is done and its result is queued here.
    main_->runPending();
    std::atomic<bool> imported{false};
    core::Dispatch::background()->async([&] { imported = true; });
    ASSERT_TRUE(main_->runUntil([&] { return imported.load(); }));
    main_->runPending();
    EXPECT_EQ(log_.lines(), std::vector<std::string>{"File already exists locally: " + cachePath("late.glb")});
}

TEST_F(OrvARViewModelLoads, ATransferFailureEndsLoadingAndObserversHearOfItOnTheViewModelsThread) {
    server_.route("/cut.glb", {.body = QByteArray(64 * 1024, 'x'), .cutAfter = 1000});
    auto model = OrvARViewModel::make(network_);
    std::vector<QThread*> notified;
    QObject::connect(model.get(), &OrvARViewModel::loadingChanged, [&] { notified.push_back(QThread::currentThread()); });
    QString failure;
    QObject::connect(model.get(), &OrvARViewModel::loadFailed, [&](const QString& message) {
        failure = message;
        notified.push_back(QThread::currentThread());
    });
    model->loadModel(server_.url("/cut.glb"));
    ASSERT_TRUE(main_->runUntil([&] {
        QCoreApplication::processEvents();
        return notified.size() == 3;
    }));
    EXPECT_FALSE(model->loading());
    EXPECT_EQ(notified, (std::vector<QThread*>(3, model->thread())));
    EXPECT_FALSE(failure.isEmpty()) << "a screen hears of the failure beside the logged line";
    EXPECT_EQ(model->modelEntity(), nullptr);
}
