// The sample host's own window: a bar with the restaurant's name and a button that opens the
// kit full screen, above the kit's embedded view (placed into `embedArea` by the host).
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

Item {
    id: host
    property string restaurantName
    property alias embedArea: embedArea
    signal openFullScreen()

    ColumnLayout {
        anchors.fill: parent
        spacing: 0
        Rectangle {
            Layout.fillWidth: true
            Layout.preferredHeight: 52
            color: "#1f3a2e"
            RowLayout {
                anchors.fill: parent
                anchors.leftMargin: 16
                anchors.rightMargin: 12
                Label {
                    text: host.restaurantName
                    color: "white"
                    font.pixelSize: 19
                    font.bold: true
                    elide: Text.ElideRight
                    Layout.fillWidth: true
                    Accessible.role: Accessible.Heading
                }
                Button {
                    objectName: "openFullScreen"
                    text: qsTr("Open full screen")
                    Accessible.name: text
                    onClicked: host.openFullScreen()
                }
            }
        }
        Item {
            id: embedArea
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
        }
    }
}
