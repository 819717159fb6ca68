#pragma once
// Checks a glTF 2.0 file (GLB or JSON) before the scene import library reads it: the GLB
// container version and chunk lengths, and that every buffer view lies inside its buffer,
// every accessor inside its buffer view and every buffer inside the bytes that back it;
// byte strides, accessor counts and types, each primitive's element count against its mode,
// a compressed primitive's accessor counts against what its stream decodes to, and image
// and texture references. The library's glTF reader trusts all of these and reads
// past its buffers, allocates for about 2^32 elements or dereferences bad pointers when a
// file lies about them, so such a file must end here as an error. Line-loop primitives,
// which crash that reader, are refused as unsupported.
// Thread: any; no shared state.

#include "core/Error.h"

#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <optional>
#include <span>

namespace orvanta::import {

class GltfLayoutCheck {
public:
    // `bytes` is the whole file; `baseDir` resolves external buffer URIs, empty when the
    // bytes came from memory (external buffers are then left to the reader, which has none).
    // Returns the first problem found, or nothing when the layout is sound. Bytes that are
    // neither a GLB container nor a JSON object are reported as malformed.
    static std::optional<core::Error> check(std::span<const std::uint8_t> bytes, const QString& baseDir);

    // The bytes of one element of `accessor` (its component size times its component count);
    // 0 when its componentType or type is not one glTF defines.
    static qint64 elementBytes(const QJsonObject& accessor);
};

} // namespace orvanta::import
