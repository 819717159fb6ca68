#include "core/Url.h"

#include <gtest/gtest.h>

using orvanta::core::Url;

TEST(Url, RejectsEmptyAndMalformedText) {
    EXPECT_FALSE(Url::fromString(""));
    EXPECT_FALSE(Url::fromString("http://[::1"));
    EXPECT_FALSE(Url::fromString("http://exa mple.com/a.usdz"));
    EXPECT_TRUE(Url::fromString("https://cdn.example.com/dishes/pasta.usdz"));
    EXPECT_TRUE(Url::fromString("pasta.usdz")); // relative references are URLs too
}

TEST(Url, LastPathComponentIgnoresQueryAndFragmentAndDecodes) {
    EXPECT_EQ(Url::fromString("https://h/a/b/pasta.usdz?v=2#top")->lastPathComponent(), "pasta.usdz");
    EXPECT_EQ(Url::fromString("https://h/a/tomato%20soup.usdz")->lastPathComponent(), "tomato soup.usdz");
    EXPECT_EQ(Url::fromString("https://h/a/dir/")->lastPathComponent(), "dir");
    EXPECT_EQ(Url::fromString("https://h/")->lastPathComponent(), "/");
    EXPECT_EQ(Url::fromString("https://h")->lastPathComponent(), "");
    EXPECT_EQ(Url::fromString("https://h/a/..%2Fescape")->lastPathComponent(), "../escape");
}

TEST(Url, FileUrlsRoundTripTheirPath) {
    const Url file = Url::fileUrl("/tmp/dir with space/x.usdz");
    EXPECT_TRUE(file.isFileUrl());
    EXPECT_EQ(file.path(), "/tmp/dir with space/x.usdz");
    EXPECT_EQ(Url::fileUrl("/tmp").appendingPathComponent("a b.usdz").path(), "/tmp/a b.usdz");
    EXPECT_FALSE(Url::fromString("https://h/x.usdz")->isFileUrl());
}
