#pragma once
// How a presented controller covers its presenter's window: the whole content area, or a sheet
// that leaves a strip of the presenter visible at the top. `automatic` lets the presenter
// choose; it shows as a page sheet. The values are the ones hosts already store.
// Thread: a value type.

namespace orvanta::ui {

enum class ModalPresentationStyle { fullScreen = 0, pageSheet = 1, automatic = -2 };

} // namespace orvanta::ui
