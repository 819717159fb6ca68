#pragma once
// JSON text for navigation destinations and whole navigation paths, so a host can save a
// Router's path and restore it later.
//
// A destination is an object with one key naming the case and an empty object under it:
// {"foodAR":{}} and {"imagePreview":{}}. Decoding ignores keys other than those two names and
// ignores whatever the nested object holds. It fails with a typeMismatch for type
// "Destination", at the object's coding path, described as
// "Invalid number of keys found, expected one." when the object has none or both of the
// names. A value that is not an object (at the top, or under the case's key) fails with the
// reader's own typeMismatch for type "JSON object" at that value's coding path, and a path that
// is not an array with one for "JSON array"; text that is not JSON fails with dataCorrupted.
//
// A path is an array of destinations, bottom first: [{"foodAR":{}},{"imagePreview":{}}].
//
// Thread: main thread.

#include <OrvantaARFoodSDK/DecodingError.h>
#include <OrvantaARFoodSDK/Router.h>

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvanta {

// Compact JSON for one destination. Main thread.
std::string encodeDestination(Router::Destination destination);
// The destination in `json`, or why there is none. Main thread.
std::variant<Router::Destination, DecodingError> decodeDestination(std::string_view json);

// Compact JSON for a whole path. Main thread.
std::string encodeNavigationPath(const std::vector<Router::Destination>& path);
// The path in `json`, or the first element's error (its coding path names the element).
// Main thread.
std::variant<std::vector<Router::Destination>, DecodingError>
decodeNavigationPath(std::string_view json);

} // namespace orvanta
