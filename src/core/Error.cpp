#include "core/Error.h"

#include <utility>

namespace orvanta::core {

Error::Error(std::string domain, int code, std::string localizedDescription)
    : domain_(std::move(domain)), code_(code), message_(std::move(localizedDescription)) {}

std::string Error::description() const {
    return "Error Domain=" + domain_ + " Code=" + std::to_string(code_) + " \"" + message_ +
           "\" UserInfo={NSLocalizedDescription=" + message_ + "}";
}

} // namespace orvanta::core
