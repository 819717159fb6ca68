#include <OrvantaARFoodSDK/Rearranged.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using orvanta::rearranged;

TEST(Rearranged, MovesTheChosenElementToTheFrontKeepingTheOthersInOrder) {
    const std::vector<char> list{'a', 'b', 'c', 'd'};
    EXPECT_EQ(rearranged(list, 'c'), (std::vector<char>{'c', 'a', 'b', 'd'}));
    EXPECT_EQ(rearranged(list, 'd'), (std::vector<char>{'d', 'a', 'b', 'c'}));
    EXPECT_EQ(rearranged(list, 'a'), list);
    EXPECT_EQ(rearranged(list, 'x'), list);
    EXPECT_EQ(rearranged(std::vector<char>{}, 'a'), std::vector<char>{});
    EXPECT_EQ(list, (std::vector<char>{'a', 'b', 'c', 'd'})); // the receiver is untouched
}

TEST(Rearranged, OnlyTheFirstEqualElementMoves) {
    EXPECT_EQ(rearranged(std::vector<char>{'a', 'b', 'a'}, 'a'), (std::vector<char>{'a', 'b', 'a'}));
    EXPECT_EQ(rearranged(std::vector<char>{'b', 'a', 'a'}, 'a'), (std::vector<char>{'a', 'b', 'a'}));
    EXPECT_EQ(rearranged(std::vector<char>{'b', 'c', 'a', 'd', 'a'}, 'a'),
              (std::vector<char>{'a', 'b', 'c', 'd', 'a'}));
}

namespace {
// Equal by key only, so a test can tell the list's own element from the argument.
struct Keyed {
    int key;
    std::string origin;
    friend bool operator==(const Keyed& a, const Keyed& b) { return a.key == b.key; }
};
} // namespace

TEST(Rearranged, TheMovedElementIsTheListsOwnValue) {
    const std::vector<Keyed> list{{1, "list"}, {2, "list"}};
    const auto result = rearranged(list, Keyed{2, "argument"});
    ASSERT_EQ(result.size(), 2u);
    EXPECT_EQ(result[0].key, 2);
    EXPECT_EQ(result[0].origin, "list");
}
