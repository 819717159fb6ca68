#pragma once
// Captures the kit's diagnostic lines for the lifetime of the object.

#include "core/Log.h"

#include <mutex>
#include <string>
#include <vector>

namespace orvanta::testing {

class LogCapture {
public:
    LogCapture() {
        previous_ = core::Log::setSink([this](const std::string& line) {
            std::lock_guard lock(mutex_);
            lines_.push_back(line);
        });
    }
    ~LogCapture() { core::Log::setSink(previous_); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const {
        std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    core::Log::Sink previous_;
};

} // namespace orvanta::testing
