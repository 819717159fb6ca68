#pragma once
// How a one-shot stream ended: finished normally, or failed with an Error.
// Thread: a value type.

#include "core/Error.h"

#include <optional>

namespace orvanta::core {

struct Completion {
    std::optional<Error> failure; // empty: finished

    static Completion finished() { return {}; }
    static Completion failed(Error error) { return {std::move(error)}; }
    bool isFinished() const { return !failure.has_value(); }
};

} // namespace orvanta::core
