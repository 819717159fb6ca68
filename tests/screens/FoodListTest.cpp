#include "ScreenTestSupport.h"

#include "screens/FoodList.h"

namespace orvanta::testing {
namespace {

using FoodListTest = ScreenTest;

TEST_F(FoodListTest, TappingTheThirdOfFourDishesPutsItFirstSelectsItAndOpensTheDish) {
    FoodList list;
    list.setViewModel(&foodVM_);
    list.tapAt(2);
    EXPECT_EQ(foodVM_.rearrangedFoods(), (std::vector<Food>{menu_[2], menu_[0], menu_[1], menu_[3]}));
    EXPECT_EQ(foodVM_.selectedFood(), menu_[2]);
    EXPECT_TRUE(list.navigateToFoodAR());
    EXPECT_EQ(foodVM_.foods(), menu_) << "the grid keeps the host's order";
}

TEST_F(FoodListTest, CardsShowNamesPricesAndPicturesOnlyForLinksThatFormAURL) {
    for (const auto& [price, text] : {std::pair{0.0, "£0.00"}, {3.0, "£3.00"}, {9.999, "£10.00"}, {12.5, "£12.50"}, {1234.5, "£1234.50"}})
        EXPECT_EQ(FoodCardsModel::priceText(price), QString::fromUtf8(text)) << price;

    FoodList list;
    list.setViewModel(&foodVM_);
    const FoodCardsModel& cards = *list.cards();
    ASSERT_EQ(cards.rowCount(), 4);
    EXPECT_EQ(cards.data(cards.index(2), FoodCardsModel::NameRole).toString(), "Pizza");
    EXPECT_EQ(cards.data(cards.index(2), FoodCardsModel::PriceTextRole).toString(), "£10.00");
    EXPECT_TRUE(cards.data(cards.index(0), FoodCardsModel::HasPictureRole).toBool());
    EXPECT_FALSE(cards.data(cards.index(1), FoodCardsModel::HasPictureRole).toBool()) << "an empty link";

    foodVM_.setFoods({menu_[3]}); // the grid follows the menu
    EXPECT_EQ(cards.rowCount(), 1);
}

} // namespace
} // namespace orvanta::testing
