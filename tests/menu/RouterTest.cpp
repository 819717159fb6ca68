#include <OrvantaARFoodSDK/Router.h>

#include <gtest/gtest.h>

#include <functional>

using orvanta::Router;
using Destination = Router::Destination;

namespace {

class RouterTest : public testing::Test {
protected:
    void SetUp() override {
        QObject::connect(&router, &Router::navPathChanged, [this] { ++notifications; });
    }
    Router router;
    int notifications = 0;
};

} // namespace

TEST_F(RouterTest, PushPopAndPopByCount) {
    EXPECT_TRUE(router.navPath().empty());

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

TEST_F(RouterTest, EachCallNotifiesOnceHowManyItRemoves) {
    router.setNavPath({Destination::foodAR, Destination::imagePreview, Destination::foodAR,
                       Destination::imagePreview});
    EXPECT_EQ(notifications, 1);
    router.goBackTo(3);
    EXPECT_EQ(router.navPath(), std::vector{Destination::foodAR});
    EXPECT_EQ(notifications, 2);
    router.goBack();
    EXPECT_TRUE(router.navPath().empty());
    EXPECT_EQ(notifications, 3);
    router.goToRoot(); // harmless on an empty path, still one modification
    router.goBackTo(0);
    EXPECT_TRUE(router.navPath().empty());
    EXPECT_EQ(notifications, 5);
}

TEST(RouterDestination, EqualityAndHashingFollowTheCase) {
    EXPECT_NE(Destination::foodAR, Destination::imagePreview);
    const std::hash<Destination> hash;
    EXPECT_EQ(hash(Destination::foodAR), std::hash<int>{}(0));
    EXPECT_EQ(hash(Destination::imagePreview), std::hash<int>{}(1));
}

TEST(RouterDeathTest, PoppingPastTheStartIsFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(Router().goBack(), "cannot remove 1 destinations from a navigation path of 0");
    EXPECT_DEATH(
        {
            Router router;
            router.go(Destination::foodAR);
            router.goBackTo(2);
        },
        "cannot remove 2 destinations from a navigation path of 1");
    EXPECT_DEATH(Router().goBackTo(-1), "cannot remove -1 destinations");
}
