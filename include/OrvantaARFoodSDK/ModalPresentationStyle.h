#pragma once
// How a presented controller covers its presenter's window: the whole content area on an
// opaque background (fullScreen), the whole area with the presenter still showing through
// wherever the presented view draws nothing (overFullScreen), or a sheet that leaves a strip
// of the presenter visible at the top (pageSheet). `automatic` lets the presenter choose; it
// shows as a page sheet. The values are the ones hosts already store.
// Thread: a value type.

namespace orvanta::ui {

enum class ModalPresentationStyle { fullScreen = 0, pageSheet = 1, overFullScreen = 5, automatic = -2 };

} // namespace orvanta::ui
