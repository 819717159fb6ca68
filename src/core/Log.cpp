#include "core/Log.h"

#include <cstdio>
#include <mutex>

namespace orvanta::core {

namespace {
std::mutex& sinkMutex() {
    static std::mutex m;
    return m;
}
Log::Sink& currentSink() {
    static Log::Sink sink;
    return sink;
}
} // namespace

void Log::print(std::string_view line) {
    std::lock_guard lock(sinkMutex());
    if (currentSink()) {
        currentSink()(std::string(line));
        return;
    }
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

Log::Sink Log::setSink(Sink sink) {
    std::lock_guard lock(sinkMutex());
    std::swap(currentSink(), sink);
    return sink;
}

} // namespace orvanta::core
