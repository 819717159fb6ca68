#pragma once
// The net layer's name for the public DownloadLimits: the bounds one HttpClient's transfers
// run within.
// Thread: a value type.

#include <OrvantaARFoodSDK/DownloadLimits.h>

namespace orvanta::net {

using TransferLimits = DownloadLimits;

} // namespace orvanta::net
