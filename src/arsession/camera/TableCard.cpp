#include "arsession/camera/TableCard.h"

#include <array>
#include <charconv>
#include <vector>

namespace orvanta::arsession::camera {

namespace {

// OpenCV's predefined dictionaries in the order of their numbers.
constexpr std::array<std::string_view, 21> dictionaryNames = {
    "DICT_4X4_50",  "DICT_4X4_100",  "DICT_4X4_250",  "DICT_4X4_1000",       "DICT_5X5_50",
    "DICT_5X5_100", "DICT_5X5_250",  "DICT_5X5_1000", "DICT_6X6_50",         "DICT_6X6_100",
    "DICT_6X6_250", "DICT_6X6_1000", "DICT_7X7_50",   "DICT_7X7_100",        "DICT_7X7_250",
    "DICT_7X7_1000", "DICT_ARUCO_ORIGINAL", "DICT_APRILTAG_16h5", "DICT_APRILTAG_25h9",
    "DICT_APRILTAG_36h10", "DICT_APRILTAG_36h11"};

// Number of markers in each dictionary above.
constexpr std::array<int, 21> dictionarySizes = {50, 100, 250, 1000, 50, 100, 250, 1000, 50, 100, 250,
                                                 1000, 50, 100, 250, 1000, 1024, 30, 35, 2320, 587};

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> fields;
    for (std::size_t start = 0;;) {
        const std::size_t end = text.find(separator, start);
        fields.push_back(text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos) return fields;
        start = end + 1;
    }
}

bool readInt(std::string_view field, int& out) {
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), out);
    return error == std::errc() && end == field.data() + field.size();
}

bool readMetres(std::string_view field, float& out) {
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), out);
    return error == std::errc() && end == field.data() + field.size() && out > 0.0f;
}

// Shortest form that reads back as the same float.
std::string metres(float value) {
    char buffer[32];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    return std::string(buffer, end);
}

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    core::Error error(const std::string& problem) const {
        return core::Error(TableCard::errorDomain, 1, "Table card \"" + std::string(text_) + "\": " + problem);
    }
    core::Error notMetres(std::string_view name, std::string_view field) const {
        return error(std::string(name) + " must be a positive number of metres, not \"" + std::string(field) + "\"");
    }
    core::Error unknownDictionary(std::string_view field) const {
        return error("DICT \"" + std::string(field) + "\" is not one of OpenCV's predefined dictionaries");
    }

private:
    std::string_view text_;
};

} // namespace

int TableCard::dictionaryNamed(std::string_view name) {
    for (std::size_t i = 0; i < dictionaryNames.size(); ++i)
        if (dictionaryNames[i] == name) return int(i);
    return -1;
}

std::string_view TableCard::dictionaryName(int dictionary) { return dictionaryNames.at(std::size_t(dictionary)); }

core::Result<TableCard> TableCard::parse(std::string_view text) {
    const Parser parser(text);
    const std::vector<std::string_view> fields = split(text, ':');
    TableCard card;
    if (fields[0] == "charuco" && fields.size() == 5) {
        card.kind = Kind::charuco;
        const std::vector<std::string_view> grid = split(fields[1], 'x');
        if (grid.size() != 2 || !readInt(grid[0], card.columns) || !readInt(grid[1], card.rows) || card.columns < 2 ||
            card.rows < 2)
            return parser.error("COLSxROWS must be two whole numbers of squares, at least 2x2, not \"" +
                                std::string(fields[1]) + "\"");
        if (!readMetres(fields[2], card.squareSize)) return parser.notMetres("SQUARE_M", fields[2]);
        if (!readMetres(fields[3], card.markerSize)) return parser.notMetres("MARKER_M", fields[3]);
        if (card.markerSize >= card.squareSize) return parser.error("MARKER_M must be smaller than SQUARE_M");
        card.dictionary = dictionaryNamed(fields[4]);
        if (card.dictionary < 0) return parser.unknownDictionary(fields[4]);
        if ((card.columns * card.rows) / 2 > dictionarySizes[std::size_t(card.dictionary)])
            return parser.error("DICT " + std::string(fields[4]) + " has too few markers for a " +
                                std::string(fields[1]) + " board");
        return card;
    }
    if (fields[0] == "aruco" && fields.size() == 4) {
        card.kind = Kind::aruco;
        card.dictionary = dictionaryNamed(fields[1]);
        if (card.dictionary < 0) return parser.unknownDictionary(fields[1]);
        if (!readInt(fields[2], card.markerId) || card.markerId < 0 ||
            card.markerId >= dictionarySizes[std::size_t(card.dictionary)])
            return parser.error("ID \"" + std::string(fields[2]) + "\" is not a marker of " + std::string(fields[1]));
        if (!readMetres(fields[3], card.markerSize)) return parser.notMetres("SIDE_M", fields[3]);
        return card;
    }
    if (fields[0] == "qr" && fields.size() == 2) {
        card.kind = Kind::qr;
        if (!readMetres(fields[1], card.markerSize)) return parser.notMetres("SIDE_M", fields[1]);
        return card;
    }
    return parser.error("expected charuco:COLSxROWS:SQUARE_M:MARKER_M:DICT, aruco:DICT:ID:SIDE_M or qr:SIDE_M");
}

QSizeF TableCard::size() const {
    if (kind == Kind::charuco) return QSizeF(columns * squareSize, rows * squareSize);
    return QSizeF(markerSize, markerSize);
}

std::string TableCard::text() const {
    switch (kind) {
    case Kind::charuco:
        return "charuco:" + std::to_string(columns) + "x" + std::to_string(rows) + ":" + metres(squareSize) + ":" +
               metres(markerSize) + ":" + std::string(dictionaryName(dictionary));
    case Kind::aruco:
        return "aruco:" + std::string(dictionaryName(dictionary)) + ":" + std::to_string(markerId) + ":" +
               metres(markerSize);
    case Kind::qr:
        return "qr:" + metres(markerSize);
    }
    return {};
}

} // namespace orvanta::arsession::camera
