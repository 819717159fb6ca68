#pragma once
// The large numeric arrays of one crate layer, left encoded in the file until they are first
// read, so that a big layer's points, normals and indices are never all decoded at once: a
// stage decodes one mesh's arrays, builds its output and frees them before the next. Plain
// float arrays (points, normals, texture coordinates) are not even copied then: the decoded
// value views the file's bytes.
//
// Holds what decoding needs once the reader is done with the structure: the file's bytes
// (owned by whoever mapped them; they must outlive every deferred array), the layer's tables
// and its memory budget, which keeps charging the arrays as they are decoded.
// Thread: belongs to the thread of one import.

#include "import/usd/CrateBudget.h"
#include "import/usd/CrateTables.h"
#include "import/usd/UsdValue.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanta::import::usd {

class CrateLazyArrays {
public:
    CrateLazyArrays(std::span<const std::uint8_t> file, std::string layerName, std::uint64_t budgetBytes)
        : file_(file), layerName_(std::move(layerName)), budget_(budgetBytes) {}

    std::span<const std::uint8_t> file() const { return file_; }
    CrateTables& tables() { return tables_; }
    CrateBudget& budget() { return budget_; }

    // Decodes the array `deferred` stands for. Throws CrateFormatError, naming the layer and
    // the array's offset, when its data is broken or exceeds the budget. Thread: the import's.
    Value decode(const DeferredArray& deferred);

private:
    std::span<const std::uint8_t> file_;
    std::string layerName_;
    CrateTables tables_;
    CrateBudget budget_;
};

} // namespace orvanta::import::usd
