#include "focus/AlignmentHistory.h"

#include <gtest/gtest.h>

using orvanta::focus::AlignmentHistory;
using Alignment = AlignmentHistory::PlaneAlignment;

namespace {
// Records `n` samples of `alignment`, returning the vote on the last one.
bool recordMany(AlignmentHistory& history, Alignment alignment, int n) {
    bool accepted = false;
    for (int i = 0; i < n; ++i) accepted = history.record(alignment);
    return accepted;
}
} // namespace

TEST(AlignmentHistory, FirstSampleIsAlwaysAccepted) {
    AlignmentHistory horizontal;
    EXPECT_TRUE(horizontal.record(Alignment::horizontal)); // 1 > 1·3/4 = 0
    AlignmentHistory vertical;
    EXPECT_TRUE(vertical.record(Alignment::vertical)); // 1 > 1/2 = 0
}

TEST(AlignmentHistory, OneVerticalHitAmongTwentyHorizontalIsRejected) {
    AlignmentHistory history;
    recordMany(history, Alignment::horizontal, 20);
    EXPECT_FALSE(history.record(Alignment::vertical)); // 1 is not > 10
    EXPECT_EQ(history.count(), 20u);
    EXPECT_EQ(history.count(Alignment::vertical), 1u);
}

TEST(AlignmentHistory, VerticalNeedsABareMajorityOfTwenty) {
    AlignmentHistory history;
    recordMany(history, Alignment::horizontal, 20);
    EXPECT_FALSE(recordMany(history, Alignment::vertical, 10)); // 10 is not > 10
    EXPECT_TRUE(history.record(Alignment::vertical));           // 11 > 10
}

TEST(AlignmentHistory, HorizontalNeedsMoreThanThreeQuartersOfTwenty) {
    AlignmentHistory history;
    recordMany(history, Alignment::vertical, 20);
    EXPECT_FALSE(recordMany(history, Alignment::horizontal, 15)); // 15 is not > 15
    EXPECT_EQ(history.count(Alignment::horizontal), 15u);
    EXPECT_TRUE(history.record(Alignment::horizontal)); // 16 > 15
}

TEST(AlignmentHistory, ShortHistoryVotesOverWhatIsHeldWithTruncatedQuotients) {
    AlignmentHistory history;
    history.record(Alignment::horizontal);
    EXPECT_FALSE(history.record(Alignment::vertical));  // 1 of 2: not > 1
    EXPECT_FALSE(history.record(Alignment::horizontal)); // 2 of 3: not > 3·3/4 = 2
    EXPECT_FALSE(history.record(Alignment::horizontal)); // 3 of 4: not > 3
    EXPECT_TRUE(history.record(Alignment::horizontal));  // 4 of 5: > 15/4 = 3
}
