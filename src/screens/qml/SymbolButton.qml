// A square button showing one symbol on the system grey, with rounded corners.
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
        scale: button.down ? 0.85 : 1.0
        Behavior on scale { NumberAnimation { duration: 120 } }
    }
    background: Rectangle {
        radius: 10
        color: Theme.systemGray
        border.width: button.visualFocus ? 2 : 0
        border.color: Theme.focusRing
    }
}
