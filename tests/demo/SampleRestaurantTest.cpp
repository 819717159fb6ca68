// The demo's restaurant end to end without a screen: its files prepared in a cache folder,
// served on loopback, and every dish's model link loaded by the kit's model loader.
#include "LoopbackMenuServer.h"
#include "SampleRestaurant.h"
#include "models/NetworkManager.h"
#include "support/EventLoopWait.h"
#include "support/ScopedTmpdir.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <atomic>

using namespace orvanta;
using namespace orvanta::demo;
using namespace std::chrono_literals;

TEST(SampleRestaurantTest, EveryDishLoadsFromTheLoopbackServerThroughTheKitsLoader) {
    QTemporaryDir cacheRoot, downloadCache;
    const auto folder = SampleRestaurant::prepare(cacheRoot.path(), false);
    ASSERT_TRUE(folder.ok()) << folder.error().localizedDescription();
    LoopbackMenuServer server(folder.value());
    const auto baseUrl = server.start();
    ASSERT_TRUE(baseUrl.ok());
    const Restaurant restaurant = SampleRestaurant::restaurant(baseUrl.value());
    ASSERT_EQ(restaurant.foods().size(), 8u);

    orvanta::testing::ScopedTmpdir tmpdir(downloadCache.path());
    auto network = std::make_shared<NetworkManager>(std::make_shared<net::HttpClient>(net::TransferLimits{.idleTimeout = 30s}));
    std::atomic<int> loaded{0}, failed{0};
    std::vector<core::Cancellable> loads;
    for (const Food& food : restaurant.foods()) {
        EXPECT_TRUE(food.imageURL().startsWith(baseUrl.value() + '/')) << food.imageURL().toStdString();
        loads.push_back(network->loadModel(food.arUSDZLink().toStdString())
                            .sink([&](const core::Completion& c) { c.failure ? ++failed : ++loaded; },
                                  [](const NetworkManager::ModelEntityPtr&) {}));
    }
    EXPECT_TRUE(orvanta::testing::EventLoopWait::until([&] { return loaded + failed == 8; }));

    EXPECT_EQ(loaded.load(), 8);
    EXPECT_EQ(failed.load(), 0);
}
