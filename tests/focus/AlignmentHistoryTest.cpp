#include "focus/AlignmentHistory.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using orvanta::focus::AlignmentHistory;
using Alignment = AlignmentHistory::PlaneAlignment;

// A vote on the last of 20 samples: vertical needs more than half, horizontal more than
// three quarters; a shorter history votes over what it holds, quotients truncated.
TEST(AlignmentHistory, VoteOnTheLastSampleAgainstTheHeldHistory) {
    constexpr Alignment H = Alignment::horizontal, V = Alignment::vertical;
    const struct {
        const char* name;
        std::vector<std::pair<Alignment, int>> runs;
        bool accepted;
    } cases[] = {
        {"first horizontal sample", {{H, 1}}, true},
        {"first vertical sample", {{V, 1}}, true},
        {"1 vertical of 20", {{H, 20}, {V, 1}}, false},
        {"10 vertical of 20", {{H, 20}, {V, 10}}, false},
        {"11 vertical of 20", {{H, 20}, {V, 11}}, true},
        {"15 horizontal of 20", {{V, 20}, {H, 15}}, false},
        {"16 horizontal of 20", {{V, 20}, {H, 16}}, true},
        {"3 horizontal of 4", {{H, 1}, {V, 1}, {H, 2}}, false},
        {"4 horizontal of 5", {{H, 1}, {V, 1}, {H, 3}}, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        AlignmentHistory history;
        bool accepted = false;
        for (const auto& [alignment, n] : c.runs)
            for (int i = 0; i < n; ++i) accepted = history.record(alignment);
        EXPECT_EQ(accepted, c.accepted);
        EXPECT_LE(history.count(), 20u);
    }
}
