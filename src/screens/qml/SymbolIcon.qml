// A line-drawn symbol on a 24 × 24 grid, scaled to the item's size: the few symbols the
// screens show, drawn by the kit so that no icon font is needed.
import QtQuick
import QtQuick.Shapes

Item {
    id: icon
    property string name
    property color color: "black"
    property real lineWidth: 2

    implicitWidth: 24
    implicitHeight: 24

    // Stroked and filled parts of each symbol, as SVG path data.
    readonly property var symbols: ({
        "chevron.left": { stroke: "M15 4 L7 12 L15 20", fill: "" },
        "xmark": { stroke: "M6 6 L18 18 M18 6 L6 18", fill: "" },
        "arrow.trianglehead.counterclockwise": { stroke: "M7.6 7.4 A7 7 0 1 1 5 12", fill: "M3.6 4.4 L10.4 5.2 L5.8 10.2 Z" },
        "square.and.arrow.up": { stroke: "M8.5 9.5 H6 V21 H18 V9.5 H15.5 M12 3 V14.5 M8.5 6.5 L12 3 L15.5 6.5", fill: "" },
        "square.and.arrow.down.fill": { stroke: "M12 3 V13.5 M8.5 10 L12 13.5 L15.5 10", fill: "M6 9.5 H9.5 L12 12 L14.5 9.5 H18 V21 H6 Z" }
    })
    readonly property var symbol: symbols[name] || { stroke: "", fill: "" }

    Shape {
        width: 24
        height: 24
        anchors.centerIn: parent
        scale: Math.min(icon.width, icon.height) / 24
        antialiasing: true
        ShapePath {
            strokeColor: icon.color
            strokeWidth: icon.lineWidth
            fillColor: "transparent"
            capStyle: ShapePath.RoundCap
            joinStyle: ShapePath.RoundJoin
            PathSvg { path: icon.symbol.stroke }
        }
        ShapePath {
            strokeColor: "transparent"
            fillColor: icon.color
            PathSvg { path: icon.symbol.fill }
        }
    }
}
