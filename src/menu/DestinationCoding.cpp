#include <OrvantaARFoodSDK/DestinationCoding.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace orvanta {

namespace {

using Json = nlohmann::json;
using CodingPath = std::vector<std::string>;
using Destination = Router::Destination;

struct CaseKey {
    Destination destination;
    std::string_view key;
};

// The one key that names each case; matching is exact and case-sensitive.
constexpr std::array<CaseKey, 2> caseKeys{{
    {Destination::foodAR, "foodAR"},
    {Destination::imagePreview, "imagePreview"},
}};

std::string_view keyFor(Destination destination) {
    return std::find_if(caseKeys.begin(), caseKeys.end(),
                        [&](const CaseKey& c) { return c.destination == destination; })
        ->key;
}

std::optional<Destination> destinationFor(std::string_view key) {
    const auto found = std::find_if(caseKeys.begin(), caseKeys.end(),
                                    [&](const CaseKey& c) { return c.key == key; });
    if (found == caseKeys.end()) return std::nullopt;
    return found->destination;
}

// "a number", "an array", ... for messages about a value of the wrong shape.
std::string describe(const Json& value) {
    switch (value.type()) {
    case Json::value_t::null: return "null";
    case Json::value_t::object: return "an object";
    case Json::value_t::array: return "an array";
    case Json::value_t::string: return "a string";
    case Json::value_t::boolean: return "a boolean";
    case Json::value_t::binary: return "binary data";
    case Json::value_t::discarded: return "nothing";
    default: return "a number";
    }
}

// The reader's own error for a value that is not the container it was asked to open; the
// containers are "JSON object" (keyed) and "JSON array" (unkeyed).
DecodingError containerMismatch(std::string container, const Json& found, CodingPath path) {
    std::string description = "Expected a " + container + " but found " + describe(found) + " instead.";
    return DecodingError(DecodingError::Kind::typeMismatch, std::move(container), std::move(path),
                         std::move(description));
}

Json encoded(Destination destination) {
    // The case's (absent) payload is an empty nested object.
    return Json{{std::string(keyFor(destination)), Json::object()}};
}

std::variant<Destination, DecodingError> decoded(const Json& value, const CodingPath& path) {
    if (!value.is_object()) return containerMismatch("JSON object", value, path);

    std::optional<Destination> only;
    std::string onlyKey;
    int recognised = 0;
    for (const auto& [key, nested] : value.items()) {
        if (const auto destination = destinationFor(key)) {
            ++recognised;
            only = destination;
            onlyKey = key;
        }
    }
    if (recognised != 1) {
        return DecodingError(DecodingError::Kind::typeMismatch, "Destination", path,
                             "Invalid number of keys found, expected one.");
    }

    const Json& payload = value.at(onlyKey);
    if (!payload.is_object()) {
        CodingPath payloadPath = path;
        payloadPath.push_back(onlyKey);
        return containerMismatch("JSON object", payload, std::move(payloadPath));
    }
    return *only;
}

// The document in `json`, or a dataCorrupted error saying why it is not JSON.
std::variant<Json, DecodingError> parsed(std::string_view json) {
    try {
        return Json::parse(json);
    } catch (const Json::parse_error& error) {
        return DecodingError(DecodingError::Kind::dataCorrupted, "", {},
                             std::string("The data is not valid JSON: ") + error.what());
    }
}

} // namespace

std::string encodeDestination(Destination destination) {
    return encoded(destination).dump();
}

std::variant<Destination, DecodingError> decodeDestination(std::string_view json) {
    auto document = parsed(json);
    if (auto* error = std::get_if<DecodingError>(&document)) return std::move(*error);
    return decoded(std::get<Json>(document), {});
}

std::string encodeNavigationPath(const std::vector<Destination>& path) {
    Json array = Json::array();
    for (const Destination destination : path) array.push_back(encoded(destination));
    return array.dump();
}

std::variant<std::vector<Destination>, DecodingError> decodeNavigationPath(std::string_view json) {
    auto document = parsed(json);
    if (auto* error = std::get_if<DecodingError>(&document)) return std::move(*error);
    const Json& array = std::get<Json>(document);
    if (!array.is_array()) return containerMismatch("JSON array", array, {});

    std::vector<Destination> path;
    path.reserve(array.size());
    for (std::size_t index = 0; index < array.size(); ++index) {
        auto element = decoded(array[index], {std::to_string(index)});
        if (auto* error = std::get_if<DecodingError>(&element)) return std::move(*error);
        path.push_back(std::get<Destination>(element));
    }
    return path;
}

} // namespace orvanta
