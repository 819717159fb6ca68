#pragma once
// Moving one chosen element of a list to its front.

#include <algorithm>
#include <concepts>
#include <vector>

namespace orvanta {

// A copy of `list` in which the first element equal to `toHaveFirst` (scanning from the
// front) comes first and all other elements keep their relative order. If no element is
// equal, the copy is unchanged. Only the first equal element moves; later equal elements stay
// where they were. The moved element is the list's own value, not the argument, so the result
// holds exactly the list's elements. `list` itself is never modified.
// Thread: main thread (it touches no shared state, so any thread that owns `list` is fine).
template <std::equality_comparable E>
std::vector<E> rearranged(const std::vector<E>& list, const E& toHaveFirst) {
    std::vector<E> result = list;
    const auto found = std::find(result.begin(), result.end(), toHaveFirst);
    if (found != result.end()) {
        // A rotation of the prefix up to the found element, not a swap with the first.
        std::rotate(result.begin(), found, std::next(found));
    }
    return result;
}

} // namespace orvanta
