#pragma once
// Why a value could not be decoded: what went wrong (kind), the type that was being decoded,
// where in the document (coding path: the keys from the root to the failing container, an
// array element's key being its index in decimal), and a description for developers. Such an
// error has no underlying error.
//
// It is a value of its own rather than a core::Error: a decoding failure is described by its
// kind and location in the document, not by a domain and a code, and hosts read those parts.
// Thread: a value type; main thread, like the decoders that make it.

#include <string>
#include <utility>
#include <vector>

namespace orvanta {

class DecodingError {
public:
    enum class Kind {
        typeMismatch,  // the value at the coding path does not have the shape the type needs
        dataCorrupted, // the bytes are not a readable document at all
    };

    // Main thread.
    DecodingError(Kind kind, std::string typeName, std::vector<std::string> codingPath,
                  std::string debugDescription)
        : kind_(kind),
          typeName_(std::move(typeName)),
          codingPath_(std::move(codingPath)),
          debugDescription_(std::move(debugDescription)) {}

    // The parts; typeName is empty for dataCorrupted. Main thread.
    Kind kind() const { return kind_; }
    const std::string& typeName() const { return typeName_; }
    const std::vector<std::string>& codingPath() const { return codingPath_; }
    const std::string& debugDescription() const { return debugDescription_; }

    // Main thread.
    friend bool operator==(const DecodingError&, const DecodingError&) = default;

private:
    Kind kind_;
    std::string typeName_;
    std::vector<std::string> codingPath_;
    std::string debugDescription_;
};

} // namespace orvanta
