// The share sheet's layout: a dimmed backdrop and, at the bottom, a card with the activities.
// The actions are the controller's (`sheet`); this file only lays them out.
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

FocusScope {
    id: root
    required property QtObject sheet
    property bool choosingPath: false

    focus: true
    Accessible.role: Accessible.Dialog
    Accessible.name: qsTr("Share picture")

    Keys.onEscapePressed: {
        if (root.choosingPath)
            root.choosingPath = false
        else
            root.sheet.cancel()
    }

    SystemPalette { id: colors }

    Rectangle {
        anchors.fill: parent
        color: "#80000000"
        MouseArea {
            anchors.fill: parent
            onClicked: root.sheet.cancel()
        }
    }

    Rectangle {
        id: card
        objectName: "card"
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 16
        width: Math.min(parent.width - 32, 420)
        height: content.implicitHeight + 32
        radius: 12
        color: colors.window

        // Clicks on the card stay on the card instead of reaching the backdrop.
        MouseArea { anchors.fill: parent }

        ColumnLayout {
            id: content
            anchors.fill: parent
            anchors.margins: 16
            spacing: 8

            Label {
                text: root.choosingPath ? qsTr("Save as") : qsTr("Share picture")
                font.bold: true
                Layout.fillWidth: true
            }

            ActivityButton {
                objectName: "copy"
                text: qsTr("Copy")
                visible: !root.choosingPath
                focus: true
                onClicked: root.sheet.copyToClipboard()
            }
            ActivityButton {
                objectName: "saveAs"
                text: qsTr("Save as…")
                visible: !root.choosingPath
                onClicked: {
                    root.choosingPath = true
                    pathField.forceActiveFocus()
                }
            }
            ActivityButton {
                objectName: "openWith"
                text: qsTr("Open with…")
                visible: !root.choosingPath
                onClicked: root.sheet.openWith()
            }
            ActivityButton {
                objectName: "cancel"
                text: qsTr("Cancel")
                visible: !root.choosingPath
                Layout.topMargin: 8
                onClicked: root.sheet.cancel()
            }

            TextField {
                id: pathField
                objectName: "path"
                visible: root.choosingPath
                text: root.sheet.suggestedSavePath
                selectByMouse: true
                Layout.fillWidth: true
                Accessible.name: qsTr("File to save")
                onAccepted: root.sheet.saveAs(text)
            }
            RowLayout {
                visible: root.choosingPath
                Layout.fillWidth: true
                ActivityButton {
                    objectName: "back"
                    text: qsTr("Back")
                    onClicked: root.choosingPath = false
                }
                ActivityButton {
                    objectName: "save"
                    text: qsTr("Save")
                    onClicked: root.sheet.saveAs(pathField.text)
                }
            }
        }
    }

    component ActivityButton: Button {
        Layout.fillWidth: true
        Accessible.role: Accessible.Button
        Accessible.name: text
        Keys.onReturnPressed: clicked()
        Keys.onEnterPressed: clicked()
    }
}
