#include <OrvantaARFoodSDK/Router.h>

#include <gtest/gtest.h>

using orvanta::Router;
using Destination = Router::Destination;

TEST(Router, PushPopAndPopByCountNotifyOncePerCall) {
    Router router;
    int notifications = 0;
    QObject::connect(&router, &Router::navPathChanged, [&] { ++notifications; });

    router.go(Destination::foodAR);
    router.go(Destination::imagePreview);
    EXPECT_EQ(router.navPath(), (std::vector{Destination::foodAR, Destination::imagePreview}));
    EXPECT_EQ(notifications, 2);
    router.goBackTo(1); // a count, not an index: pops one
    EXPECT_EQ(router.navPath(), std::vector{Destination::foodAR});
    EXPECT_EQ(notifications, 3);
    router.goToRoot();
    EXPECT_TRUE(router.navPath().empty());
    EXPECT_EQ(notifications, 4);
}
