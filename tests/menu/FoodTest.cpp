#include <OrvantaARFoodSDK/Food.h>

#include <gtest/gtest.h>

using orvanta::Food;

TEST(Food, IdentityNotFieldsDecidesEqualityAndHash) {
    const auto pasta = [] { return Food("Pasta", "https://h/pasta.png", "https://h/pasta.usdz", 12.5); };
    const Food first = pasta();
    const Food second = pasta();
    EXPECT_NE(first.id(), second.id());
    EXPECT_NE(first, second);
    EXPECT_NE(std::hash<Food>{}(first), std::hash<Food>{}(second));

    const Food copy = first;
    EXPECT_EQ(copy, first);
    EXPECT_EQ(std::hash<Food>{}(copy), std::hash<Food>{}(first));
}
