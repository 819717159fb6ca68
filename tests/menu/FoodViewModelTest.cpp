#include <OrvantaARFoodSDK/FoodViewModel.h>

#include <gtest/gtest.h>

#include <QVariant>

using orvanta::Food;
using orvanta::FoodViewModel;
using orvanta::Restaurant;

namespace {

// How often each property's change signal fired.
struct Notifications {
    int foods = 0;
    int rearrangedFoods = 0;
    int selectedFood = 0;

    explicit Notifications(FoodViewModel& vm) {
        QObject::connect(&vm, &FoodViewModel::foodsChanged, [this] { ++foods; });
        QObject::connect(&vm, &FoodViewModel::rearrangedFoodsChanged, [this] { ++rearrangedFoods; });
        QObject::connect(&vm, &FoodViewModel::selectedFoodChanged, [this] { ++selectedFood; });
    }
    bool are(int f, int r, int s) const { return foods == f && rearrangedFoods == r && selectedFood == s; }
};

class FoodViewModelTest : public testing::Test {
protected:
    Food a{"A", "a.png", "a.usdz", 1.0};
    Food b{"B", "b.png", "b.usdz", 2.0};
    Food c{"C", "c.png", "c.usdz", 3.0};
    FoodViewModel vm;
    Notifications notified{vm};
};

} // namespace

TEST_F(FoodViewModelTest, StartsEmpty) {
    EXPECT_TRUE(vm.foods().empty());
    EXPECT_TRUE(vm.rearrangedFoods().empty());
    EXPECT_FALSE(vm.selectedFood().has_value());
}

TEST_F(FoodViewModelTest, EachOperationWritesAndNotifiesOnlyItsProperty) {
    vm.updateFoodList(Restaurant("Bistro", {a, b, c}));
    EXPECT_EQ(vm.foods(), (std::vector<Food>{a, b, c}));
    EXPECT_TRUE(notified.are(1, 0, 0));

    // A tap: reorder, then select.
    vm.rearrangedFoods(c);
    EXPECT_EQ(vm.rearrangedFoods(), (std::vector<Food>{c, a, b}));
    EXPECT_EQ(vm.foods(), (std::vector<Food>{a, b, c}));
    EXPECT_TRUE(notified.are(1, 1, 0));

    vm.updatedSelectedFood(c);
    EXPECT_EQ(vm.selectedFood(), c);
    EXPECT_TRUE(notified.are(1, 1, 1));
}

TEST_F(FoodViewModelTest, ReorderingWithADishNotOnTheMenuKeepsTheMenusOrder) {
    vm.setFoods({a, b});
    vm.rearrangedFoods(Food("A", "a.png", "a.usdz", 1.0)); // same fields, other identity
    EXPECT_EQ(vm.rearrangedFoods(), (std::vector<Food>{a, b}));
}

TEST_F(FoodViewModelTest, EveryWriteNotifiesEvenWithAnEqualValue) {
    vm.updatedSelectedFood(a);
    vm.updatedSelectedFood(a);
    vm.setRearrangedFoods({});
    EXPECT_TRUE(notified.are(0, 1, 2));
}

TEST_F(FoodViewModelTest, MetaPropertiesAreWiredToTheirOwnSignals) {
    ASSERT_TRUE(vm.setProperty("foods", QVariant::fromValue(std::vector<Food>{b, a})));
    EXPECT_TRUE(notified.are(1, 0, 0));
    ASSERT_TRUE(vm.setProperty("rearrangedFoods", QVariant::fromValue(std::vector<Food>{a})));
    EXPECT_TRUE(notified.are(1, 1, 0));
    ASSERT_TRUE(vm.setProperty("selectedFood", QVariant::fromValue(std::optional<Food>(b))));
    EXPECT_TRUE(notified.are(1, 1, 1));

    EXPECT_EQ(vm.property("foods").value<std::vector<Food>>(), (std::vector<Food>{b, a}));
    EXPECT_EQ(vm.property("rearrangedFoods").value<std::vector<Food>>(), std::vector<Food>{a});
    EXPECT_EQ(vm.property("selectedFood").value<std::optional<Food>>(), b);
}
