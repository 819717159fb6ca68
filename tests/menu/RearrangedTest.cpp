#include <OrvantaARFoodSDK/Rearranged.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(Rearranged, MovesTheFirstEqualElementToTheFrontKeepingTheOthersInOrder) {
    using List = std::vector<char>;
    const struct {
        List list;
        char chosen;
        List expected;
    } cases[] = {
        {{'a', 'b', 'c', 'd'}, 'c', {'c', 'a', 'b', 'd'}},
        {{'a', 'b', 'c', 'd'}, 'a', {'a', 'b', 'c', 'd'}},
        {{'a', 'b', 'c', 'd'}, 'x', {'a', 'b', 'c', 'd'}},
        {{}, 'a', {}},
        {{'a', 'b', 'a'}, 'a', {'a', 'b', 'a'}},
        {{'b', 'a', 'a'}, 'a', {'a', 'b', 'a'}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.list.begin(), c.list.end()) + " with " + c.chosen);
        EXPECT_EQ(orvanta::rearranged(c.list, c.chosen), c.expected);
    }
}
