// A picture loaded asynchronously from a link, filling a square frame with rounded corners;
// a spinner stands in its place while it loads and when the load fails. It stays out of the
// accessibility tree: the button it sits in carries the dish's name.
import QtQuick
import QtQuick.Controls
import Qt5Compat.GraphicalEffects

Item {
    id: frame
    property url source
    property real radius: 10
    property bool fill: true
    readonly property bool loaded: picture.status === Image.Ready

    Image {
        id: picture
        objectName: "picture"
        anchors.fill: parent
        source: frame.source
        asynchronous: true
        fillMode: frame.fill ? Image.PreserveAspectCrop : Image.PreserveAspectFit
        sourceSize: Qt.size(frame.width * 2, frame.height * 2)
        visible: false
        Accessible.ignored: true
    }
    OpacityMask {
        anchors.fill: parent
        source: picture
        visible: frame.loaded
        maskSource: Rectangle {
            width: frame.width
            height: frame.height
            radius: frame.radius
        }
        Accessible.ignored: true
    }
    BusyIndicator {
        anchors.centerIn: parent
        running: !frame.loaded
        visible: running
        Accessible.ignored: true
    }
}
