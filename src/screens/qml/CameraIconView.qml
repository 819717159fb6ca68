// The capture button's face: a white ring 70 across with a gap of 3 around a white disc 56 across.
import QtQuick

Item {
    implicitWidth: 70
    implicitHeight: 70

    Rectangle {
        anchors.centerIn: parent
        width: 70
        height: 70
        radius: 35
        color: "transparent"
        border.color: "white"
        border.width: 4
    }
    Rectangle {
        anchors.centerIn: parent
        width: 56
        height: 56
        radius: 28
        color: "white"
    }
}
