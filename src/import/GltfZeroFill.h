#pragma once
// Gives every glTF accessor that has no buffer view one full of zeros (those of compressed
// primitives aside, which their decoder fills). Such an accessor is legal: its elements read
// as zeros, often with sparse values written over some of them. The scene import library
// reads it as missing data and refuses the whole file, so the file is rewritten before the
// library sees it: one zero-filled buffer (a data URI), one view of it that every such
// accessor reads from its start, the rest of the file unchanged.
// Thread: any; no shared state.

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <span>

namespace orvanta::import {

class GltfZeroFill {
public:
    // `bytes`: a whole GLB or glTF JSON file that passed GltfLayoutCheck. Returns the file
    // rewritten, or nothing when no accessor lacks a buffer view.
    static std::optional<QByteArray> fill(std::span<const std::uint8_t> bytes);
};

} // namespace orvanta::import
