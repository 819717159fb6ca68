// The snapshot preview: the picture at the top, scaled to fit, with "Done" on the leading side
// of the bar and "Share" and "Save to Photos" on the trailing side.
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import OrvantaARFoodSDK

FocusScope {
    id: page
    property alias imagePreview: preview.imagePreview
    signal screenRemoved()

    function closeTopScreen() { preview.done() }

    ImagePreviewView {
        id: preview
        onDismissRequested: page.StackView.view.pop()
    }
    StackView.onRemoved: page.screenRemoved()
    focus: true

    Rectangle { anchors.fill: parent; color: Theme.background }

    component BarButton: ToolButton {
        id: barButton
        property string symbol
        property string caption
        focusPolicy: Qt.StrongFocus
        Accessible.role: Accessible.Button
        Accessible.name: caption
        contentItem: Column {
            spacing: 0
            SymbolIcon {
                name: barButton.symbol
                color: Theme.focusRing
                width: 22
                height: 22
                anchors.horizontalCenter: parent.horizontalCenter
            }
            Label {
                text: barButton.caption
                Accessible.ignored: true
                topPadding: 1
                font.pixelSize: Theme.caption2
                color: Theme.focusRing
                anchors.horizontalCenter: parent.horizontalCenter
            }
        }
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        RowLayout {
            Layout.fillWidth: true
            Layout.margins: Theme.padding / 2
            ToolButton {
                objectName: "doneButton"
                text: qsTr("Done")
                font.pixelSize: Theme.body
                focusPolicy: Qt.StrongFocus
                Accessible.role: Accessible.Button
                Accessible.name: text
                palette.buttonText: Theme.focusRing
                onClicked: preview.done()
            }
            Item { Layout.fillWidth: true }
            BarButton {
                objectName: "shareButton"
                symbol: "square.and.arrow.up"
                caption: qsTr("Share")
                onClicked: preview.shareImage()
            }
            BarButton {
                objectName: "saveButton"
                symbol: "square.and.arrow.down.fill"
                caption: qsTr("Save to Photos")
                onClicked: preview.saveImageToPhotos()
            }
        }

        PictureItem {
            objectName: "previewPicture"
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.margins: Theme.padding
            image: preview.imagePreview ? preview.imagePreview.image : undefined
            Accessible.role: Accessible.Graphic
            Accessible.name: qsTr("Photo of the dish")
            // Scaled to fit at the top: the spare height goes below the picture.
            Layout.maximumHeight: paintedRect.width > 0 ? width * image.height / image.width : -1
        }
        Item { Layout.fillHeight: true }
    }

    // What a save or a share activity did, for a few seconds at the bottom.
    Rectangle {
        id: report
        objectName: "report"
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 2 * Theme.padding
        width: Math.min(reportText.implicitWidth + 2 * Theme.padding, parent.width - 2 * Theme.padding)
        height: reportText.implicitHeight + Theme.padding
        radius: height / 2
        color: preview.reportIsFailure ? "#e6b3261e" : "#e62c2c2e"
        opacity: 0
        visible: opacity > 0
        Behavior on opacity { NumberAnimation { duration: Theme.defaultAnimationDuration; easing.type: Easing.InOutQuad } }
        Accessible.role: Accessible.AlertMessage
        Accessible.name: preview.report
        Label {
            id: reportText
            anchors.centerIn: parent
            width: Math.min(implicitWidth, report.parent.width - 4 * Theme.padding)
            text: preview.report
            color: "white"
            font.pixelSize: Theme.subheadline
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            Accessible.ignored: true
        }
        Timer {
            id: hideReport
            interval: preview.reportIsFailure ? 4000 : 2500
            onTriggered: report.opacity = 0
        }
        Connections {
            target: preview
            function onReported() {
                report.opacity = 1
                hideReport.restart()
            }
        }
    }
}
