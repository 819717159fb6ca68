#include <OrvantaARFoodSDK/Food.h>
#include <OrvantaARFoodSDK/Restaurant.h>

#include <gtest/gtest.h>

#include <QMetaProperty>

#include <unordered_set>

using orvanta::Food;
using orvanta::Restaurant;

namespace {
Food pasta() { return Food("Pasta", "https://h/pasta.png", "https://h/pasta.usdz", 12.5); }
} // namespace

TEST(Food, KeepsItsFieldsAndGetsAFreshIdentity) {
    const Food food = pasta();
    EXPECT_EQ(food.name(), "Pasta");
    EXPECT_EQ(food.imageURL(), "https://h/pasta.png");
    EXPECT_EQ(food.arUSDZLink(), "https://h/pasta.usdz");
    EXPECT_EQ(food.price(), 12.5);
    EXPECT_FALSE(food.id().isNull());
    EXPECT_EQ(food.id().version(), QUuid::Random);
}

TEST(Food, DishesMadeSeparatelyDifferEvenWithTheSameArguments) {
    const Food first = pasta();
    const Food second = pasta();
    EXPECT_NE(first.id(), second.id());
    EXPECT_NE(first, second);
    EXPECT_NE(std::hash<Food>{}(first), std::hash<Food>{}(second));
    EXPECT_EQ((std::unordered_set<Food>{first, second}.size()), 2u);
}

TEST(Food, ACopyEqualsItsOriginalAndHashesAlike) {
    const Food original = pasta();
    const Food copy = original;
    EXPECT_EQ(copy, original);
    EXPECT_EQ(std::hash<Food>{}(copy), std::hash<Food>{}(original));
    EXPECT_EQ((std::unordered_set<Food>{original, copy}.size()), 1u);
}

TEST(Food, QmlSeesTheFieldsAsGadgetProperties) {
    const Food food = pasta();
    const QMetaObject& meta = Food::staticMetaObject;
    const auto read = [&](const char* name) {
        return meta.property(meta.indexOfProperty(name)).readOnGadget(&food);
    };
    EXPECT_EQ(read("id").toUuid(), food.id());
    EXPECT_EQ(read("name").toString(), "Pasta");
    EXPECT_EQ(read("imageURL").toString(), "https://h/pasta.png");
    EXPECT_EQ(read("arUSDZLink").toString(), "https://h/pasta.usdz");
    EXPECT_EQ(read("price").toDouble(), 12.5);
}

TEST(Restaurant, KeepsTheHostsOrderAndNeverSharesAnIdentity) {
    const Food a = pasta();
    const Food b("Soup", "s.png", "s.usdz", 4.0);
    const Restaurant first("Bistro", {a, b});
    const Restaurant second("Bistro", {a, b});
    EXPECT_EQ(first.name(), "Bistro");
    EXPECT_EQ(first.foods(), (std::vector<Food>{a, b}));
    EXPECT_FALSE(first.id().isNull());
    EXPECT_NE(first.id(), second.id());
}
