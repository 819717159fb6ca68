// A picture loaded asynchronously from a link, filling a square frame with rounded corners;
// a spinner stands in its place while it loads and when the load fails.
import QtQuick
import QtQuick.Controls
import Qt5Compat.GraphicalEffects

Item {
    id: frame
    property url source
    property real radius: 10
    property bool fill: true

    Image {
        id: picture
        anchors.fill: parent
        source: frame.source
        asynchronous: true
        fillMode: frame.fill ? Image.PreserveAspectCrop : Image.PreserveAspectFit
        sourceSize: Qt.size(frame.width * 2, frame.height * 2)
        visible: false
    }
    OpacityMask {
        anchors.fill: parent
        source: picture
        visible: picture.status === Image.Ready
        maskSource: Rectangle {
            width: frame.width
            height: frame.height
            radius: frame.radius
        }
    }
    BusyIndicator {
        anchors.centerIn: parent
        running: picture.status !== Image.Ready
        visible: running
        Accessible.name: qsTr("Loading picture")
    }
}
