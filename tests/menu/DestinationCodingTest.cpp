// The navigation path and the JSON form its destinations are saved in.
#include <OrvantaARFoodSDK/DestinationCoding.h>

#include <gtest/gtest.h>

using orvanta::DecodingError;
using Destination = orvanta::Router::Destination;
using Kind = DecodingError::Kind;

TEST(Router, PushPopAndPopByCountNotifyOncePerCall) {
    orvanta::Router router;
    int notifications = 0;
    QObject::connect(&router, &orvanta::Router::navPathChanged, [&] { ++notifications; });
    router.go(Destination::foodAR);
    router.go(Destination::imagePreview);
    EXPECT_EQ(router.navPath(), (std::vector{Destination::foodAR, Destination::imagePreview}));
    router.goBackTo(1); // a count, not an index: pops one
    EXPECT_EQ(router.navPath(), std::vector{Destination::foodAR});
    router.goToRoot();
    EXPECT_TRUE(router.navPath().empty());
    EXPECT_EQ(notifications, 4);
}

TEST(DestinationCoding, DecodesOneKnownKeyAndRoundTrips) {
    const std::pair<const char*, Destination> cases[] = {
        {R"({"foodAR":{}})", Destination::foodAR},
        {R"({"imagePreview":{"x":1}})", Destination::imagePreview},
        {R"({"foodAR":{},"other":1})", Destination::foodAR},
    };
    for (const auto& [json, expected] : cases) {
        SCOPED_TRACE(json);
        EXPECT_EQ(std::get<Destination>(orvanta::decodeDestination(json)), expected);
        EXPECT_EQ(std::get<Destination>(orvanta::decodeDestination(orvanta::encodeDestination(expected))), expected);
    }
    EXPECT_EQ(orvanta::encodeDestination(Destination::imagePreview), R"({"imagePreview":{}})");
    const std::vector path{Destination::foodAR, Destination::imagePreview};
    EXPECT_EQ(std::get<std::vector<Destination>>(orvanta::decodeNavigationPath(orvanta::encodeNavigationPath(path))), path);
}

TEST(DestinationCoding, FailsWithTheWrongKeyCountOrTheReadersOwnError) {
    const std::string wrongKeyCount = "Invalid number of keys found, expected one.";
    const std::pair<const char*, DecodingError> cases[] = {
        {R"({})", DecodingError(Kind::typeMismatch, "Destination", {}, wrongKeyCount)},
        {R"({"foodAR":{},"imagePreview":{}})", DecodingError(Kind::typeMismatch, "Destination", {}, wrongKeyCount)},
        {R"({"foodAR":1})", DecodingError(Kind::typeMismatch, "JSON object", {"foodAR"},
                                          "Expected a JSON object but found a number instead.")},
    };
    for (const auto& [json, expected] : cases) {
        SCOPED_TRACE(json);
        EXPECT_EQ(std::get<DecodingError>(orvanta::decodeDestination(json)), expected);
    }
}
