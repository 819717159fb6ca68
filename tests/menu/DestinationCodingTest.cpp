#include <OrvantaARFoodSDK/DestinationCoding.h>

#include <gtest/gtest.h>

using orvanta::DecodingError;
using Destination = orvanta::Router::Destination;
using Kind = DecodingError::Kind;

TEST(DestinationCoding, DecodesOneKnownKeyAndRoundTrips) {
    const std::pair<const char*, Destination> cases[] = {
        {R"({"foodAR":{}})", Destination::foodAR},
        {R"({"imagePreview":{"x":1}})", Destination::imagePreview},
        {R"({"foodAR":{},"other":1})", Destination::foodAR},
    };
    for (const auto& [json, expected] : cases) {
        SCOPED_TRACE(json);
        const auto decoded = orvanta::decodeDestination(json);
        ASSERT_TRUE(std::holds_alternative<Destination>(decoded));
        EXPECT_EQ(std::get<Destination>(decoded), expected);
        const auto again = orvanta::decodeDestination(orvanta::encodeDestination(expected));
        ASSERT_TRUE(std::holds_alternative<Destination>(again));
        EXPECT_EQ(std::get<Destination>(again), expected);
    }
    EXPECT_EQ(orvanta::encodeDestination(Destination::imagePreview), R"({"imagePreview":{}})");
    const std::vector path{Destination::foodAR, Destination::imagePreview};
    const auto decodedPath = orvanta::decodeNavigationPath(orvanta::encodeNavigationPath(path));
    EXPECT_EQ(std::get<std::vector<Destination>>(decodedPath), path);
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
        const auto decoded = orvanta::decodeDestination(json);
        ASSERT_TRUE(std::holds_alternative<DecodingError>(decoded));
        EXPECT_EQ(std::get<DecodingError>(decoded), expected);
    }
}
