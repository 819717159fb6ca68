#include <OrvantaARFoodSDK/DownloadLimits.h>

#include <mutex>

namespace orvanta {

namespace {

std::mutex& defaultsMutex() {
    static std::mutex mutex;
    return mutex;
}

DownloadLimits& current() {
    static DownloadLimits limits;
    return limits;
}

} // namespace

void DownloadLimits::setDefaults(const DownloadLimits& limits) {
    std::lock_guard lock(defaultsMutex());
    current() = limits;
}

DownloadLimits DownloadLimits::defaults() {
    std::lock_guard lock(defaultsMutex());
    return current();
}

} // namespace orvanta
