#include "import/usd/CrateLazyArrays.h"

#include "import/usd/CrateValueReader.h"

namespace orvanta::import::usd {

Value CrateLazyArrays::decode(const DeferredArray& deferred) {
    try {
        return CrateValueReader(file_, tables_, budget_, CrateValueReader::Storage::viewFloats).unpack(deferred.rep);
    } catch (const CrateFormatError& error) {
        throw CrateFormatError("USDC layer " + layerName_ + ": the array at offset " +
                                   std::to_string(deferred.rep & CrateValueReader::offsetMask) + ": " + error.what(),
                               error.code());
    }
}

} // namespace orvanta::import::usd
