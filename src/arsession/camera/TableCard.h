#pragma once
// The printed card that marks a table, described by one text shared by hosts and tools:
//   charuco:COLSxROWS:SQUARE_M:MARKER_M:DICT   a ChArUco board (e.g. charuco:5x7:0.04:0.02:DICT_6X6_250)
//   aruco:DICT:ID:SIDE_M                       a single marker
//   qr:SIDE_M                                  a QR code; its four corners give the pose
// Sizes are metres; DICT is the name of one of OpenCV's predefined marker dictionaries.
// The card's frame is the world frame of a camera session: its centre is the origin, it lies
// in the horizontal plane with +y out of the table, and its long side runs along −z.
// Thread: a value type, usable on any thread.

#include "core/Result.h"

#include <QSizeF>

#include <string>
#include <string_view>

namespace orvanta::arsession::camera {

class TableCard {
public:
    enum class Kind { charuco, aruco, qr };

    // Errors of card texts: code 1, the message names the text and the field at fault.
    static constexpr const char* errorDomain = "TableCardError";
    // Fits an A4 or Letter page with the measuring bar and the printing note.
    static constexpr const char* defaultText = "charuco:5x7:0.03:0.022:DICT_6X6_250";

    static core::Result<TableCard> parse(std::string_view text);

    Kind kind = Kind::charuco;
    int columns = 0, rows = 0;   // charuco: squares across and along
    float squareSize = 0.0f;     // charuco: chessboard square side, metres
    float markerSize = 0.0f;     // charuco: marker side; aruco, qr: the whole code's side (metres)
    int dictionary = 0;          // OpenCV's predefined dictionary number (charuco, aruco)
    int markerId = 0;            // aruco

    // Width (across, world x) and length (along, world −z) of the printed pattern, metres.
    QSizeF size() const;
    // The text parse() reads back to this card.
    std::string text() const;

    // OpenCV's number of the dictionary named `name` (e.g. "DICT_6X6_250"), or −1.
    static int dictionaryNamed(std::string_view name);
    static std::string_view dictionaryName(int dictionary);

    friend bool operator==(const TableCard&, const TableCard&) = default;
};

} // namespace orvanta::arsession::camera
