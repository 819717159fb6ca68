#include "core/Result.h"

#include <gtest/gtest.h>

using namespace orvanta::core;

// Reading the side a result does not hold is a broken contract, not an expected failure:
// the test build keeps assertions on, so it must stop the process.
TEST(ResultDeathTest, ReadingTheMissingSideIsFatal) {
    const Result<int> failed(Error("Test", 1, "no value"));
    const Result<int> succeeded(3);
    EXPECT_DEATH((void)failed.value(), "ok\\(\\)");
    EXPECT_DEATH((void)succeeded.error(), "!ok\\(\\)");
    EXPECT_EQ(succeeded.value(), 3);
    EXPECT_EQ(failed.error().code(), 1);
}
