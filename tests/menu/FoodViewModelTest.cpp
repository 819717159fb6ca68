// Dishes, the reordering that puts the chosen one first, and the view model that holds both.
#include <OrvantaARFoodSDK/FoodViewModel.h>
#include <OrvantaARFoodSDK/Rearranged.h>

#include <gtest/gtest.h>

using orvanta::Food;

TEST(Food, IdentityNotFieldsDecidesEqualityAndHash) {
    const Food first("Pasta", "p.png", "p.usdz", 12.5), second("Pasta", "p.png", "p.usdz", 12.5), copy = first;
    EXPECT_NE(first, second);
    EXPECT_NE(std::hash<Food>{}(first), std::hash<Food>{}(second));
    EXPECT_EQ(copy, first);
    EXPECT_EQ(std::hash<Food>{}(copy), std::hash<Food>{}(first));
}

// The first element equal to the chosen one moves to the front; the others keep their order.
TEST(Rearranged, MovesTheFirstEqualElementToTheFront) {
    const struct {
        std::string list;
        char chosen;
        std::string expected;
    } cases[] = {{"abcd", 'c', "cabd"}, {"abcd", 'a', "abcd"}, {"abcd", 'x', "abcd"}, {"", 'a', ""},
                 {"aba", 'a', "aba"},   {"baa", 'a', "aba"},   {"abcd", 'd', "dabc"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.list + " with " + c.chosen);
        const std::vector<char> list(c.list.begin(), c.list.end());
        EXPECT_EQ(orvanta::rearranged(list, c.chosen), std::vector<char>(c.expected.begin(), c.expected.end()));
    }
}

TEST(FoodViewModel, EachOperationNotifiesOnlyItsProperty) {
    orvanta::FoodViewModel vm;
    int foods = 0, rearranged = 0, selected = 0;
    QObject::connect(&vm, &orvanta::FoodViewModel::foodsChanged, [&] { ++foods; });
    QObject::connect(&vm, &orvanta::FoodViewModel::rearrangedFoodsChanged, [&] { ++rearranged; });
    QObject::connect(&vm, &orvanta::FoodViewModel::selectedFoodChanged, [&] { ++selected; });
    const Food a("A", "", "a.usdz", 1), b("B", "", "b.usdz", 2), c("C", "", "c.usdz", 3);

    vm.updateFoodList(orvanta::Restaurant("Bistro", {a, b, c}));
    EXPECT_EQ(vm.foods(), (std::vector<Food>{a, b, c}));
    EXPECT_EQ(std::tuple(foods, rearranged, selected), std::tuple(1, 0, 0));
    vm.rearrangedFoods(c);
    EXPECT_EQ(vm.rearrangedFoods(), (std::vector<Food>{c, a, b}));
    EXPECT_EQ(vm.foods(), (std::vector<Food>{a, b, c}));
    EXPECT_EQ(std::tuple(foods, rearranged, selected), std::tuple(1, 1, 0));
    vm.updatedSelectedFood(c);
    EXPECT_EQ(vm.selectedFood(), c);
    EXPECT_EQ(std::tuple(foods, rearranged, selected), std::tuple(1, 1, 1));
}
