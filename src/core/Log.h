#pragma once
// Diagnostic lines: one line of plain text on standard output, no prefix. Tests may install
// a sink to capture the lines instead.
// Thread: any; lines from several threads are never interleaved within a line.

#include <functional>
#include <string>
#include <string_view>

namespace orvanta::core {

class Log {
public:
    using Sink = std::function<void(const std::string& line)>;

    // Prints `line` followed by a newline, or hands it to the installed sink.
    static void print(std::string_view line);

    // Replaces the destination of lines (nullptr restores standard output); returns the old one.
    static Sink setSink(Sink sink);
};

} // namespace orvanta::core
