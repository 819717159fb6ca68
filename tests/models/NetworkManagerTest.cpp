#include "ModelsFixture.h"

#include <OrvantaARFoodSDK/DrawingBudget.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <limits>
#include <string_view>

#include <sys/resource.h>

using namespace orvanta;
using namespace orvanta::testing;
using NodePtr = NetworkManager::SceneNodePtr;
using EntityPtr = NetworkManager::ModelEntityPtr;

namespace {

// Opens the protected local loaders for the error-table checks.
class ExposedNetworkManager : public NetworkManager {
public:
    using NetworkManager::loadModelFromLocalURL;
    using NetworkManager::loadSceneKitModelFromLocalURL;
};

constexpr int anyCode = std::numeric_limits<int>::min();

// The error's domain and code (unless `anyCode`), and its message: the whole of it, or (`part`)
// a piece of it.
void expectError(const std::optional<core::Error>& error, const char* domain, int code, const std::string& message = {},
                 bool part = false) {
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain(), domain);
    if (code != anyCode) {
        EXPECT_EQ(error->code(), code) << error->localizedDescription();
    }
    const std::string text = error->localizedDescription();
    if (!message.empty()) {
        EXPECT_TRUE(part ? text.find(message) != std::string::npos : text == message) << text;
    }
}

} // namespace

using NetworkManagerCache = ModelsFixture;

TEST_F(NetworkManagerCache, CachedFileIsServedWithoutARequestAndStalePartFilesGo) {
    TestModels::write(cachePath("dish.glb"), TestModels::glbWithNodes(1));
    // Part files of downloads whose process died: past the deadline (10 minutes) they go.
    const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::minutes(11);
    for (const char* name : {".download-Ab12Cd.part", ".download-Ef34Gh.part", ".notes.part"}) {
        TestModels::write(cachePath(name), "partial");
        if (std::string_view(name) != ".download-Ef34Gh.part") std::filesystem::last_write_time(cachePath(name), longAgo);
    }
    const auto outcome = awaitOutcome(network_->loadSceneKitModel(server_.url("/menu/dish.glb")));
    EXPECT_TRUE(outcome.finished);
    EXPECT_EQ(server_.requestCount(), 0);
    EXPECT_EQ(log_.lines(), std::vector<std::string>{"File already exists locally: " + cachePath("dish.glb")});
    EXPECT_EQ(cacheFiles(), (QStringList{".download-Ef34Gh.part", ".notes.part", "dish.glb"}));
}

TEST_F(NetworkManagerCache, DownloadsOnceThenAnyLinkWithTheSameFileNameHitsTheCacheAndRedirectsAreFollowed) {
    serveModel("/a/pasta.glb");
    ASSERT_TRUE(awaitOutcome(network_->loadSceneKitModel(server_.url("/a/pasta.glb"))).finished);
    // Another host, folder and query, same last component: the first file answers.
    EXPECT_TRUE(awaitOutcome(network_->loadSceneKitModel("http://localhost:1/elsewhere/pasta.glb?size=large")).finished);
    EXPECT_EQ(server_.requestCount(), 1);
    EXPECT_EQ(log_.lines().front(), "Downloaded and saved model to: " + cachePath("pasta.glb"));
    EXPECT_EQ(cacheFiles(), QStringList{"pasta.glb"});
    // The request carries nothing of the kit.
    const auto requests = server_.requests();
    for (const auto& [name, value] : requests.at(0).headers)
        EXPECT_TRUE(name == "host" || name == "connection" || name == "accept-encoding" || name == "accept-language" ||
                    name == "user-agent") << name;

    // A redirect is followed and its answer cached under the requested name.
    serveModel("/real/final.glb");
    server_.route("/old/dish.glb", {.redirectTo = server_.url("/real/final.glb")});
    EXPECT_TRUE(awaitOutcome(network_->loadSceneKitModel(server_.url("/old/dish.glb"))).finished);
    EXPECT_EQ(cacheFiles(), (QStringList{"dish.glb", "pasta.glb"}));
}

TEST_F(NetworkManagerCache, ErrorPageIsCachedAsTheModelAndFailsInTheLoader) {
    // No route: the server answers 404 with an HTML page.
    const auto node = awaitOutcome(network_->loadSceneKitModel(server_.url("/missing.usdz")));
    expectError(node.error, "SceneKitError", 500, "Unable to create a SceneSource from the file.");
    EXPECT_TRUE(node.deliveredOnMain);
    QFile cached(QString::fromStdString(cachePath("missing.usdz")));
    ASSERT_TRUE(cached.open(QIODevice::ReadOnly));
    EXPECT_TRUE(cached.readAll().startsWith("<html>"));

    // The AR path reads the same cached page and reports the importer's own error.
    expectError(awaitOutcome(network_->loadModel(server_.url("/missing.usdz"))).error, "ModelImportError", 2);
    EXPECT_EQ(server_.requestCount(), 1);
}

TEST_F(NetworkManagerCache, APlantedLinkIsReplacedNeverFollowedAndAnUnusableTmpdirWritesNothing) {
    QTemporaryDir elsewhere;
    const QString planted = elsewhere.filePath("planted.glb");
    TestModels::write(planted.toStdString(), TestModels::glbWithNodes(1));
    ASSERT_TRUE(QFile::link(planted, QString::fromStdString(cachePath("dish.glb"))));
    serveModel("/dish.glb", 2);
    const auto outcome = awaitOutcome(network_->loadSceneKitModel(server_.url("/dish.glb")));
    ASSERT_TRUE(outcome.value.has_value());
    EXPECT_EQ((*outcome.value)->childNodes().size(), 2u); // the served model, not the planted one
    EXPECT_EQ(server_.requestCount("/dish.glb"), 1);
    EXPECT_FALSE(QFileInfo(QString::fromStdString(cachePath("dish.glb"))).isSymLink());
    EXPECT_EQ(QFileInfo(planted).size(), static_cast<qint64>(TestModels::glbWithNodes(1).size()));

    // A TMPDIR that names no directory is an error; nothing lands at the file-system root.
    qputenv("TMPDIR", QByteArray::fromStdString(cachePath("missing")));
    expectError(awaitOutcome(network_->loadSceneKitModel(server_.url("/orvanta-root-check.glb"))).error,
                "TemporaryDirectoryError", anyCode);
    EXPECT_EQ(server_.requestCount("/orvanta-root-check.glb"), 0);
    EXPECT_FALSE(QFileInfo::exists("/orvanta-root-check.glb"));
}

using NetworkManagerTransfer = ModelsFixture;

TEST_F(NetworkManagerTransfer, ConnectionClosedMidBodyFailsOffTheMainThreadAndLeavesNoFile) {
    server_.route("/broken.glb", {.body = QByteArray(1 << 20, 'x'), .cutAfter = 1 << 19});
    // The failure is delivered by the HTTP client's thread, not through the main queue.
    const auto outcome = awaitOutcome(network_->loadSceneKitModel(server_.url("/broken.glb")));
    expectError(outcome.error, "URLError", -1005);
    EXPECT_FALSE(outcome.deliveredOnMain);
    EXPECT_TRUE(cacheFiles().isEmpty());

    // Nothing counts as cached: the next request for the same file name goes to the
    // network again. It is counted on a fresh route, because the HTTP stack may resend the
    // first GET on its closed connection at any time, even after the failure arrived.
    serveModel("/again/broken.glb");
    EXPECT_TRUE(awaitOutcome(network_->loadSceneKitModel(server_.url("/again/broken.glb"))).finished);
    EXPECT_EQ(server_.requestCount("/again/broken.glb"), 1);
}

TEST_F(NetworkManagerTransfer, ConcurrentLoadsDeliverEveryValueAndCompletionOnTheMainQueue) {
    constexpr int loads = 20;
    // Per load: whether its value came on the main queue, then 1 once it finished there after it, 2 otherwise.
    std::vector<std::pair<std::atomic<bool>, std::atomic<int>>> deliveries(loads);
    std::vector<core::Cancellable> keep;
    for (int i = 0; i < loads; ++i) {
        const std::string path = "/concurrent/dish-" + std::to_string(i) + ".glb";
        serveModel(path);
        auto& [valueOnMain, result] = deliveries[static_cast<std::size_t>(i)];
        auto onCompletion = [&, this](const core::Completion& c) { result = c.isFinished() && valueOnMain && main_->isCurrent() ? 1 : 2; };
        auto onValue = [&, this](auto) { valueOnMain = main_->isCurrent(); };
        if (i % 2 == 0) keep.push_back(network_->loadSceneKitModel(server_.url(path)).sink(onCompletion, onValue));
        else keep.push_back(network_->loadModel(server_.url(path)).sink(onCompletion, onValue));
    }
    const auto settled = [&] { return std::all_of(deliveries.begin(), deliveries.end(), [](const auto& d) { return d.second > 0; }); };
    ASSERT_TRUE(main_->runUntil(settled, std::chrono::seconds(120)));
    for (int i = 0; i < loads; ++i) EXPECT_EQ(deliveries[static_cast<std::size_t>(i)].second, 1) << i;
}

TEST_F(NetworkManagerTransfer, AWriteFailureNamesItsCauseAndLeavesNoFile) {
    server_.route("/big.glb", {.body = QByteArray(1 << 20, 'b')});
    // A file-size limit makes the disk refuse the body part way, as a full disk would.
    struct rlimit saved {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = saved;
    small.rlim_cur = 64 * 1024;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const auto outcome = awaitOutcome(network_->loadSceneKitModel(server_.url("/big.glb")));
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);
    expectError(outcome.error, "FileWriteError", EFBIG, ": File too large", true);
    EXPECT_TRUE(cacheFiles().isEmpty());
}

TEST_F(NetworkManagerTransfer, ASilentServerTimesOut) {
    server_.route("/silent.glb", {.body = TestModels::glbWithNodes(1), .delayMs = 10 * 60 * 1000}); // never answers in time
    auto impatient = std::make_shared<NetworkManager>(
        std::make_shared<net::HttpClient>(net::TransferLimits{.idleTimeout = std::chrono::milliseconds(300)}));
    expectError(awaitOutcome(impatient->loadSceneKitModel(server_.url("/silent.glb"))).error, "URLError", -1001);
    EXPECT_TRUE(cacheFiles().isEmpty());
}

TEST_F(NetworkManagerTransfer, HostileFileNamesNeverReachTheFileSystem) {
    for (const std::string path : {"/..", "/%2e%2e", "/.", "/a%2Fb.usdz", "/a%2F..%2F..%2Fetc%2Fpasswd", "/x%00y.usdz", "/"}) {
        SCOPED_TRACE(path);
        expectError(awaitOutcome(network_->loadModel(server_.url(path))).error, "ARModelError", 400);
    }
    EXPECT_EQ(server_.requestCount(), 0);
    EXPECT_TRUE(cacheFiles().isEmpty());
    EXPECT_TRUE(QDir(cacheFolder_).entryList(QDir::Dirs | QDir::NoDotAndDotDot).isEmpty());

    // A name longer than the file system allows is fetched, then refused by the disk, which
    // says why; nothing stays behind.
    const std::string longName = "/" + std::string(300, 'n') + ".glb";
    serveModel(longName);
    expectError(awaitOutcome(network_->loadSceneKitModel(server_.url(longName))).error, "FileWriteError", ENAMETOOLONG,
                ": File name too long", true);
    EXPECT_TRUE(cacheFiles().isEmpty());
}

using NetworkManagerLoaders = ModelsFixture;

TEST_F(NetworkManagerLoaders, ContainerHoldsTheSceneRootsChildrenInOrderAndTheEntityArrivesOnTheMainQueue) {
    TestModels::write(cachePath("three.glb"), TestModels::glbWithNodes(3));
    const auto outcome = awaitOutcome(network_->loadSceneKitModel(server_.url("/three.glb")));
    ASSERT_TRUE(outcome.value.has_value());
    const NodePtr& container = *outcome.value;
    EXPECT_EQ(container->parent(), nullptr);
    ASSERT_EQ(container->childNodes().size(), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(container->childNodes()[i]->name(), "node" + std::to_string(i));
        EXPECT_EQ(container->childNodes()[i]->parent(), container);
    }
    EXPECT_TRUE(outcome.deliveredOnMain);

    Outcome<EntityPtr> entity;
    auto c = record(network_->loadModel(server_.url("/three.glb")), entity, *main_);
    EXPECT_FALSE(entity.done()); // the load starts only on the main queue
    ASSERT_TRUE(main_->runUntil([&] { return entity.done(); }));
    ASSERT_TRUE(entity.value.has_value());
    EXPECT_TRUE(entity.deliveredOnMain);
    EXPECT_EQ((*entity.value)->name(), "three.glb");
}

TEST_F(NetworkManagerLoaders, LinksWithoutAFileExtensionLoadByTheirContent) {
    serveModel("/models/dish", 2);
    serveModel("/model", 3);
    for (const std::string link : {"/models/dish", "/model?id=42"}) {
        SCOPED_TRACE(link);
        const auto node = awaitOutcome(network_->loadSceneKitModel(server_.url(link)));
        ASSERT_TRUE(node.value.has_value()) << node.error->description();
        const auto entity = awaitOutcome(network_->loadModel(server_.url(link)));
        ASSERT_TRUE(entity.value.has_value()) << entity.error->description();
        EXPECT_EQ((*node.value)->childNodes().size(), link == "/models/dish" ? 2u : 3u);
    }
}

TEST_F(NetworkManagerLoaders, EveryOwnErrorHasItsDomainCodeAndMessage) {
    auto exposed = std::make_shared<ExposedNetworkManager>();
    const std::string missing = cachePath("gone.usdz");
    Outcome<EntityPtr> badEntityLink, missingEntity;
    Outcome<NodePtr> badNodeLink, notFile, missingNode, notScene, noScene;
    std::vector<core::Cancellable> keep;
    keep.push_back(record(network_->loadModel(""), badEntityLink, *main_));
    keep.push_back(record(network_->loadSceneKitModel(""), badNodeLink, *main_));
    keep.push_back(record(exposed->loadSceneKitModelFromLocalURL(*core::Url::fromString("https://h/x.usdz")), notFile, *main_));
    keep.push_back(record(exposed->loadModelFromLocalURL(core::Url::fileUrl(missing)), missingEntity, *main_));
    keep.push_back(record(exposed->loadSceneKitModelFromLocalURL(core::Url::fileUrl(missing)), missingNode, *main_));
    // Invalid links fail synchronously, inside the call.
    expectError(badEntityLink.error, "ARModelError", 400, "Invalid URL");
    expectError(badNodeLink.error, "SceneKitError", 400, "Invalid URL");
    expectError(notFile.error, "InvalidURLError", 400, "URL must be a file URL.");
    expectError(missingEntity.error, "FileExistenceError", 404, "File not found at " + missing);
    expectError(missingNode.error, "FileExistenceError", 404, "File not found at " + missing);

    TestModels::write(cachePath("page.usdz"), "<!doctype html><html></html>");
    TestModels::write(cachePath("broken.glb"), "glTF\x02\0\0\0garbage");
    keep.push_back(record(exposed->loadSceneKitModelFromLocalURL(core::Url::fileUrl(cachePath("page.usdz"))), notScene, *main_));
    keep.push_back(record(exposed->loadSceneKitModelFromLocalURL(core::Url::fileUrl(cachePath("broken.glb"))), noScene, *main_));
    EXPECT_FALSE(notScene.done()); // parse outcomes always go through the main queue
    main_->runPending();
    expectError(notScene.error, "SceneKitError", 500, "Unable to create a SceneSource from the file.");
    expectError(noScene.error, "SceneKitError", 500, "Unable to load a scene from the SceneSource.");
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(NetworkManagerLoaders, InstancedSeedsLoadAsInstancesAndABudgetBeyondThemRefusesThemInBothModes) {
    // 50 seeds of 18 triangles: 900 triangles, 1 draw call.
    server_.route("/seeds.usda", {.body = TestModels::seedScatterUsda(50, 3)});
    const std::string link = server_.url("/seeds.usda");

    const auto entity = awaitOutcome(network_->loadModel(link));
    ASSERT_TRUE(entity.value.has_value()) << entity.error->description();
    const auto seeds = (*entity.value)->findEntity("Seed");
    ASSERT_TRUE(seeds && seeds->model() && seeds->model()->instances);
    EXPECT_EQ(seeds->model()->instances->count(), 50u);
    const auto node = awaitOutcome(network_->loadSceneKitModel(link));
    ASSERT_TRUE(node.value.has_value()) << node.error->description();
    const auto& dish = (*node.value)->childNodes();
    ASSERT_EQ(dish.size(), 1u);
    ASSERT_EQ(dish[0]->childNodes().size(), 1u);
    const auto& geometry = dish[0]->childNodes()[0]->geometry();
    ASSERT_TRUE(geometry && geometry->instances);
    EXPECT_EQ(geometry->instances->size(), 50u);

    const DrawingBudget saved = DrawingBudget::current();
    const struct {
        DrawingBudget budget;
        const char* message;
    } cases[] = {
        {{500, 10}, "The model is too heavy to draw: 900 triangles after instancing, 400 over the budget of 500 (1.8 times)"},
        {{100, 0}, "800 over the budget of 100 (9.0 times); 1 draw calls, 1 over the budget of 0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        DrawingBudget::setCurrent(c.budget);
        const auto refusedEntity = awaitOutcome(network_->loadModel(link));
        const auto refusedNode = awaitOutcome(network_->loadSceneKitModel(link));
        for (const auto& error : {refusedEntity.error, refusedNode.error}) expectError(error, "ModelImportError", 5, c.message, true);
    }
    DrawingBudget::setCurrent(saved);
    EXPECT_EQ(cacheFiles(), QStringList{"seeds.usda"});
    EXPECT_EQ(server_.requestCount(), 1);
}
