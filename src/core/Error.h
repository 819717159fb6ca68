#pragma once
// The platform error value: a domain, an integer code and one localized message.
// Errors made by other layers (transfer, file system, importers) use their own domain and
// travel through the kit unchanged.
// Thread: a value type, safe to copy between threads.

#include <string>

namespace orvanta::core {

class Error {
public:
    Error(std::string domain, int code, std::string localizedDescription);

    const std::string& domain() const { return domain_; }
    int code() const { return code_; }
    const std::string& localizedDescription() const { return message_; }

    // The long rendering used in log lines:
    // Error Domain=<domain> Code=<code> "<message>" UserInfo={NSLocalizedDescription=<message>}
    std::string description() const;

    friend bool operator==(const Error&, const Error&) = default;

private:
    std::string domain_;
    int code_;
    std::string message_;
};

} // namespace orvanta::core
