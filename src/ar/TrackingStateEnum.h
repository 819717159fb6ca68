#pragma once
// The camera's tracking quality as the dish screen sees it: `normal` when objects can be
// placed, `notTracking` for every other state (not available, or limited for any reason).
// The screen holds it as std::optional: no value means not reported yet.
// Thread: a value type.

namespace orvanta {

enum class TrackingStateEnum { normal, notTracking };

} // namespace orvanta
