#pragma once
// Turns crate value representations into Values. A representation is a uint64: bit 63 array,
// bit 62 inlined, bit 61 compressed, bits 48-55 the type, the low 48 bits either the value
// itself (inlined) or the file offset of its data. Every offset, count and size is checked
// against the file, and every allocation is charged to the layer's budget. Types the kit
// does not use become an empty Value. With a CrateLazyArrays to defer to, a field's large
// numeric arrays become DeferredArrays that it decodes later.
// Thread: used by one reader on one thread.

#include "import/usd/CrateBudget.h"
#include "import/usd/CrateCursor.h"
#include "import/usd/CrateTables.h"
#include "import/usd/UsdValue.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace orvanta::import::usd {

class CrateValueReader {
public:
    // The low bits of a value representation: the value itself or the offset of its data.
    static constexpr std::uint64_t offsetMask = (1ull << 48) - 1;
    // Numeric arrays of at least this many bytes are deferred when the reader may defer.
    static constexpr std::uint64_t minDeferredArrayBytes = 16 * 1024;

    // How values refer to the file once read.
    enum class Storage {
        copies,             // every value owns its data
        deferLargeArrays,   // top-level numeric arrays of minDeferredArrayBytes or more stay
                            // encoded as DeferredArrays for `deferTo` to decode later
        viewFloats,         // plain float arrays view the file's bytes, which outlive them
    };

    // `file` is the whole crate file; `tables` and `budget` must outlive the reader.
    CrateValueReader(std::span<const std::uint8_t> file, const CrateTables& tables, CrateBudget& budget,
                     Storage storage = Storage::copies, std::shared_ptr<CrateLazyArrays> deferTo = nullptr)
        : file_(file), tables_(tables), budget_(budget), storage_(storage), deferTo_(std::move(deferTo)) {}

    // Decodes one value representation. Throws CrateFormatError. Thread: the reader's.
    Value unpack(std::uint64_t rep) { return unpack(rep, 0); }

private:
    struct Numeric;

    Value unpack(std::uint64_t rep, int depth);
    bool worthDeferring(std::uint8_t type, std::uint64_t offset);
    Value unpackInlined(std::uint8_t type, std::uint64_t payload);
    Value readScalar(std::uint8_t type, CrateCursor& at, int depth);
    Value readArray(std::uint8_t type, CrateCursor& at, bool compressed);
    Value readNumericArray(const Numeric& numeric, CrateCursor& at, bool compressed);
    Value readCompressedReals(const Numeric& numeric, CrateCursor& at, std::uint64_t count);
    Value numericValue(const Numeric& numeric, bool isArray, std::span<const std::uint8_t> raw, std::uint64_t count);
    std::uint64_t readArrayCount(CrateCursor& at);
    Dictionary readDictionary(CrateCursor& at, int depth);
    TimeSamples readTimeSamples(CrateCursor& at, int depth);
    ReferenceArray readReferences(CrateCursor& at, bool payloads, bool listOp, int depth);
    Reference readReference(CrateCursor& at, bool payload, int depth);
    Value unpackAfterJump(CrateCursor& at, int depth);
    template <class T, class ReadItem> void readVector(CrateCursor& at, std::size_t itemSize, std::vector<T>& out, ReadItem&& item);
    template <class T, class ReadItem> std::vector<T> readListOp(CrateCursor& at, std::size_t itemSize, ReadItem&& item);

    std::span<const std::uint8_t> file_;
    const CrateTables& tables_;
    CrateBudget& budget_;
    Storage storage_;
    std::shared_ptr<CrateLazyArrays> deferTo_;
};

} // namespace orvanta::import::usd
