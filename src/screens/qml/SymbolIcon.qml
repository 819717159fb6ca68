// One of the symbols the screens show, drawn from the Material Icons font (Debian's
// fonts-material-design-icons-iconfont, which the kit loads from its installed place) and
// sized to the item. Buttons carry the names screen readers announce; the glyph itself stays
// out of the accessibility tree.
import QtQuick

Item {
    id: icon
    property string name
    property color color: "black"

    // The screens' symbol names and the glyphs of the font that stand for them.
    readonly property var codePoints: ({
        "xmark": 0xe5cd,                                // close
        "chevron.left": 0xe5e0,                         // arrow_back_ios
        "arrow.trianglehead.counterclockwise": 0xe042,  // replay
        "square.and.arrow.up": 0xe6b8,                  // ios_share
        "square.and.arrow.down.fill": 0xe171            // save_alt
    })

    implicitWidth: 24
    implicitHeight: 24
    Accessible.ignored: true

    Text {
        objectName: "glyph"
        anchors.fill: parent
        text: icon.codePoints[icon.name] !== undefined ? String.fromCodePoint(icon.codePoints[icon.name]) : ""
        color: icon.color
        font.family: "Material Icons"
        font.pixelSize: Math.min(icon.width, icon.height)
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
}
