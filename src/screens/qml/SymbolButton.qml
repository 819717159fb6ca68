// A square button showing one symbol on the system grey, with rounded corners. The symbol
// carries the scale effect at all times (drawn a fifth larger than its frame); a press
// darkens the grey.
import QtQuick
import QtQuick.Controls

Button {
    id: button
    property string symbol
    property color symbolColor: "black"

    padding: 15
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.Button
    contentItem: SymbolIcon {
        name: button.symbol
        color: button.symbolColor
        implicitWidth: 20
        implicitHeight: 20
        scale: Theme.symbolEffectScale
    }
    background: Rectangle {
        radius: 10
        color: button.down ? Qt.darker(Theme.systemGray, 1.2) : Theme.systemGray
        border.width: button.visualFocus ? 2 : 0
        border.color: Theme.focusRing
    }
}
