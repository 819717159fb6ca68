#include <OrvantaARFoodSDK/DestinationCoding.h>

#include <gtest/gtest.h>

using orvanta::DecodingError;
using orvanta::Router;
using Destination = Router::Destination;
using Path = std::vector<Destination>;

namespace {

template <class T>
T decodedValue(const std::variant<T, DecodingError>& result) {
    if (const auto* error = std::get_if<DecodingError>(&result)) {
        ADD_FAILURE() << "unexpected decoding error: " << error->debugDescription();
    }
    return std::get<T>(result);
}

template <class T>
DecodingError decodingError(const std::variant<T, DecodingError>& result) {
    EXPECT_TRUE(std::holds_alternative<DecodingError>(result)) << "decoding unexpectedly succeeded";
    return std::get<DecodingError>(result);
}

const std::string wrongKeyCount = "Invalid number of keys found, expected one.";

} // namespace

TEST(DestinationCoding, EncodesEachCaseAsAnEmptyObjectUnderItsKey) {
    EXPECT_EQ(orvanta::encodeDestination(Destination::foodAR), R"({"foodAR":{}})");
    EXPECT_EQ(orvanta::encodeDestination(Destination::imagePreview), R"({"imagePreview":{}})");
}

TEST(DestinationCoding, RoundTripsEachCase) {
    for (const Destination d : {Destination::foodAR, Destination::imagePreview}) {
        EXPECT_EQ(decodedValue(orvanta::decodeDestination(orvanta::encodeDestination(d))), d);
    }
}

TEST(DestinationCoding, DecodingIgnoresUnknownKeysAndNestedContents) {
    EXPECT_EQ(decodedValue(orvanta::decodeDestination(R"({"foodAR":{}})")), Destination::foodAR);
    EXPECT_EQ(decodedValue(orvanta::decodeDestination(R"({"imagePreview":{"x":1}})")),
              Destination::imagePreview);
    EXPECT_EQ(decodedValue(orvanta::decodeDestination(R"({"foodAR":{},"other":1})")),
              Destination::foodAR);
    EXPECT_EQ(decodedValue(orvanta::decodeDestination(R"({"FoodAR":1,"imagePreview":{}})")),
              Destination::imagePreview); // keys match case-sensitively
}

TEST(DestinationCoding, NoneOrBothKeysIsATypeMismatchAtTheContainer) {
    for (const char* json : {R"({})", R"({"foodAR":{},"imagePreview":{}})", R"({"other":{}})"}) {
        EXPECT_EQ(decodingError(orvanta::decodeDestination(json)),
                  DecodingError(DecodingError::Kind::typeMismatch, "Destination", {}, wrongKeyCount))
            << json;
    }
}

TEST(DestinationCoding, ANonObjectFailsWithTheReadersOwnError) {
    EXPECT_EQ(decodingError(orvanta::decodeDestination(R"({"foodAR":1})")),
              DecodingError(DecodingError::Kind::typeMismatch, "JSON object", {"foodAR"},
                            "Expected a JSON object but found a number instead."));
    EXPECT_EQ(decodingError(orvanta::decodeDestination(R"("foodAR")")),
              DecodingError(DecodingError::Kind::typeMismatch, "JSON object", {},
                            "Expected a JSON object but found a string instead."));
    const DecodingError notJson = decodingError(orvanta::decodeDestination("{\"foodAR\":"));
    EXPECT_EQ(notJson.kind(), DecodingError::Kind::dataCorrupted);
    EXPECT_TRUE(notJson.codingPath().empty());
}

TEST(DestinationCoding, RoundTripsWholePaths) {
    const Path path{Destination::foodAR, Destination::imagePreview, Destination::foodAR};
    const std::string json = orvanta::encodeNavigationPath(path);
    EXPECT_EQ(json, R"([{"foodAR":{}},{"imagePreview":{}},{"foodAR":{}}])");
    EXPECT_EQ(decodedValue(orvanta::decodeNavigationPath(json)), path);
    EXPECT_EQ(orvanta::encodeNavigationPath({}), "[]");
    EXPECT_EQ(decodedValue(orvanta::decodeNavigationPath("[]")), Path{});
}

TEST(DestinationCoding, PathErrorsNameTheFailingElement) {
    EXPECT_EQ(decodingError(orvanta::decodeNavigationPath(R"([{"foodAR":{}},{}])")),
              DecodingError(DecodingError::Kind::typeMismatch, "Destination", {"1"}, wrongKeyCount));
    EXPECT_EQ(decodingError(orvanta::decodeNavigationPath(R"([{"foodAR":{}},{"imagePreview":[]}])")),
              DecodingError(DecodingError::Kind::typeMismatch, "JSON object", {"1", "imagePreview"},
                            "Expected a JSON object but found an array instead."));
    EXPECT_EQ(decodingError(orvanta::decodeNavigationPath(R"({"foodAR":{}})")),
              DecodingError(DecodingError::Kind::typeMismatch, "JSON array", {},
                            "Expected a JSON array but found an object instead."));
}
