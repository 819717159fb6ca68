#include "core/CancellationToken.h"

#include <gtest/gtest.h>

using namespace orvanta::core;

TEST(CancellationToken, ActionsRunOnceWhetherRegisteredBeforeOrAfterTheCancel) {
    CancellationToken token;
    int before = 0, after = 0;
    token.onCancel([&] { ++before; });
    EXPECT_EQ(before, 0);
    token.cancel();
    token.cancel();
    EXPECT_EQ(before, 1);
    EXPECT_TRUE(token.isCancelled());
    token.onCancel([&] { ++after; }); // too late to wait for a cancel: runs at once
    EXPECT_EQ(after, 1);
    token.cancel();
    EXPECT_EQ(before + after, 2);
}
