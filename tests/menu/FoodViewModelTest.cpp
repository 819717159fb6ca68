#include <OrvantaARFoodSDK/FoodViewModel.h>

#include <gtest/gtest.h>

using orvanta::Food;
using orvanta::FoodViewModel;
using orvanta::Restaurant;

namespace {

class FoodViewModelTest : public testing::Test {
protected:
    void SetUp() override {
        QObject::connect(&vm, &FoodViewModel::foodsChanged, [this] { ++foods; });
        QObject::connect(&vm, &FoodViewModel::rearrangedFoodsChanged, [this] { ++rearranged; });
        QObject::connect(&vm, &FoodViewModel::selectedFoodChanged, [this] { ++selected; });
    }
    // How often each property's change signal fired.
    bool notified(int f, int r, int s) const { return foods == f && rearranged == r && selected == s; }

    Food a{"A", "a.png", "a.usdz", 1.0};
    Food b{"B", "b.png", "b.usdz", 2.0};
    Food c{"C", "c.png", "c.usdz", 3.0};
    FoodViewModel vm;
    int foods = 0, rearranged = 0, selected = 0;
};

} // namespace

TEST_F(FoodViewModelTest, StartsEmptyAndEachOperationNotifiesOnlyItsProperty) {
    EXPECT_TRUE(vm.foods().empty());
    EXPECT_TRUE(vm.rearrangedFoods().empty());
    EXPECT_FALSE(vm.selectedFood().has_value());

    vm.updateFoodList(Restaurant("Bistro", {a, b, c}));
    EXPECT_EQ(vm.foods(), (std::vector<Food>{a, b, c}));
    EXPECT_TRUE(notified(1, 0, 0));
    vm.rearrangedFoods(c);
    EXPECT_EQ(vm.rearrangedFoods(), (std::vector<Food>{c, a, b}));
    EXPECT_EQ(vm.foods(), (std::vector<Food>{a, b, c}));
    EXPECT_TRUE(notified(1, 1, 0));
    vm.updatedSelectedFood(c);
    EXPECT_EQ(vm.selectedFood(), c);
    EXPECT_TRUE(notified(1, 1, 1));
}
