#pragma once
// The printed face of a table card: its code in black on white, exactly the card's size at a
// given resolution. ChArUco boards and markers are drawn by OpenCV's aruco module; a QR
// code's text is encoded by libqrencode. Used by the card printing tool and by the drawn
// camera pictures (CardTableScene), so both show the same card.
// Thread: stateless, usable on any thread.

#include "arsession/camera/TableCard.h"
#include "core/Result.h"

#include <QImage>

#include <string>

namespace orvanta::arsession::camera {

class CardArtwork {
public:
    // Errors of drawing: code 1 when a QR card's text is empty or too long for a QR code.
    static constexpr const char* errorDomain = "CardArtworkError";

    // The code at `pixelsPerMetre` (Grayscale8, card.size() rounded to whole pixels). For a
    // QR card `qrText` is the text its code holds (a menu's link, say).
    static core::Result<QImage> draw(const TableCard& card, double pixelsPerMetre, const std::string& qrText = {});

    // The white paper a printed card keeps around its code on every side, metres: a QR code's
    // quiet zone and a marker's white border need a fifth of the code's side, a board less.
    static double margin(const TableCard& card);
};

} // namespace orvanta::arsession::camera
