// The dish screen: the dish in AR (placed through the camera) or in 3D, the instruction text,
// the top bar (close, mode, reset), the capture button, the dish strip, the progress of a
// load, a load failure with Retry, and the snapshot thumbnail over everything.
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Qt5Compat.GraphicalEffects
import OrvantaARFoodSDK

FocusScope {
    id: page
    property alias foodVM: screen.foodVM
    readonly property FoodARView dishState: screen
    signal screenRemoved()

    function closeTopScreen() { screen.close() }

    // What shows and hides with the mode control fades with the toolkit's default animation.
    component DefaultFade: NumberAnimation { duration: Theme.defaultAnimationDuration; easing.type: Easing.InOutQuad }

    FoodARView {
        id: screen
        onDismissRequested: page.StackView.view.pop()
        onNavigateToImagePreviewChanged: {
            if (navigateToImagePreview) page.StackView.view.push(previewScreen)
        }
    }
    // The appear action runs as the screen starts to slide in, so a tap during the slide
    // already acts on the chosen dish.
    StackView.onActivating: screen.appear()
    StackView.onRemoved: page.screenRemoved()
    focus: true

    Component {
        id: previewScreen
        ImagePreviewScreen {
            imagePreview: screen.imagePreview
            onScreenRemoved: screen.navigateToImagePreview = false
        }
    }

    Keys.onPressed: (event) => {
        if ((event.key === Qt.Key_Space || event.key === Qt.Key_C) && screen.showsARView && screen.isModelLoaded) {
            screen.takeScreenshot()
        } else if (event.key === Qt.Key_Left || event.key === Qt.Key_Right) {
            // The arrows move the keyboard into the dish strip.
            strip.forceActiveFocus(Qt.TabFocusReason)
            if (event.key === Qt.Key_Left) strip.decrementCurrentIndex(); else strip.incrementCurrentIndex()
        } else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter) {
            screen.chooseDishAt(strip.currentIndex)
        } else {
            return
        }
        screen.tap()
        event.accepted = true
    }

    // A tap anywhere shows the mode control again; the controls and views inside still get it.
    TapArea {
        anchors.fill: parent
        onTapped: {
            screen.tap()
            strip.focus = false // a pointer in use: the keyboard leaves the strip, its ring goes
        }

        Rectangle { anchors.fill: parent; color: screen.shows3DViewer ? "white" : "black" }

        Loader {
            anchors.fill: parent
            active: screen.showsARView
            sourceComponent: ARViewContainerItem {
                objectName: "arView"
                screen: page.dishState
                Accessible.role: Accessible.Graphic
                Accessible.name: qsTr("Camera view with the dish on the table")
            }
        }
        Loader {
            anchors.fill: parent
            active: screen.shows3DViewer
            sourceComponent: ThreeDViewerItem {
                objectName: "threeDViewer"
                screen: page.dishState
                Accessible.role: Accessible.Graphic
                Accessible.name: qsTr("3D view of the dish")
            }
        }

        Label {
            visible: screen.showsInstructionText
            text: qsTr("Aim at Your Table / Flat Surface")
            color: "white"
            font.pixelSize: Theme.body
            font.bold: true
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.top: parent.top
            anchors.topMargin: 130
            horizontalAlignment: Text.AlignHCenter
            width: Math.min(implicitWidth, parent.width - 2 * Theme.padding)
            wrapMode: Text.WordWrap
            style: Text.Raised
            styleColor: "#80000000"
        }

        ColumnLayout {
            anchors.fill: parent
            anchors.margins: Theme.padding / 2
            spacing: Theme.padding / 2

            RowLayout {
                id: topBar
                objectName: "topBar"
                Layout.alignment: Qt.AlignHCenter
                spacing: 0
                // Takes taps from the moment it is shown, while it still fades in.
                visible: screen.showsTopBar || opacity > 0
                opacity: screen.showsTopBar ? 1 : 0
                Behavior on opacity { DefaultFade {} }

                SymbolButton {
                    objectName: "closeButton"
                    symbol: "xmark"
                    Accessible.name: qsTr("Close")
                    Layout.rightMargin: 10
                    onClicked: screen.close()
                }
                Rectangle {
                    color: Theme.systemGray
                    radius: 10
                    implicitWidth: modeRow.implicitWidth + 20
                    implicitHeight: modeRow.implicitHeight + 20
                    Accessible.role: Accessible.PageTabList
                    Accessible.name: qsTr("Mode")
                    Row {
                        id: modeRow
                        anchors.centerIn: parent
                        Repeater {
                            model: [{ label: "AR", mode: FoodARView.AR }, { label: "3D", mode: FoodARView.ThreeD }]
                            delegate: Button {
                                required property var modelData
                                objectName: "mode" + modelData.label
                                text: modelData.label
                                checkable: true
                                checked: screen.selectedMode === modelData.mode
                                width: 64
                                focusPolicy: Qt.StrongFocus
                                Accessible.role: Accessible.PageTab
                                Accessible.name: modelData.label
                                onClicked: screen.selectedMode = modelData.mode
                                background: Rectangle {
                                    radius: 7
                                    color: parent.checked ? "white" : "transparent"
                                    border.width: parent.visualFocus ? 2 : 0
                                    border.color: Theme.focusRing
                                }
                            }
                        }
                    }
                }
                SymbolButton {
                    objectName: "resetButton"
                    symbol: "arrow.trianglehead.counterclockwise"
                    Accessible.name: qsTr("Reset")
                    Layout.leftMargin: 10
                    onClicked: screen.resetPressed()
                }
            }

            Item { Layout.fillHeight: true }

            Button {
                objectName: "captureButton"
                // Keeps its place in the column while hidden, so it is where the guest sees
                // it from the moment it shows; hidden, it takes no taps and is not announced.
                opacity: screen.showsCaptureButton ? 1 : 0
                enabled: screen.showsCaptureButton
                Accessible.ignored: !screen.showsCaptureButton
                Behavior on opacity { DefaultFade {} }
                Layout.alignment: Qt.AlignHCenter
                Layout.bottomMargin: Theme.padding
                Accessible.name: qsTr("Take a photo")
                Accessible.role: Accessible.Button
                padding: 0
                background: Item {}
                contentItem: CameraIconView {}
                onClicked: screen.takeScreenshot()
            }

            // The dish strip: the 80 × 80 pictures on their grey tiles, in a strip with rounded
            // corners; the keyboard's ring shows while the strip has the keyboard.
            Item {
                Layout.fillWidth: true
                Layout.preferredHeight: 80
                layer.enabled: true
                layer.effect: OpacityMask {
                    maskSource: Rectangle { width: strip.width; height: strip.height; radius: 10 }
                }
                ListView {
                    id: strip
                    objectName: "dishStrip"
                    anchors.fill: parent
                    orientation: ListView.Horizontal
                    spacing: 8
                    model: screen.dishes
                    currentIndex: screen.selectedFoodIndex
                    keyNavigationEnabled: false
                    Accessible.role: Accessible.List
                    Accessible.name: qsTr("Dishes")
                    delegate: Rectangle {
                        id: tile
                        required property int index
                        required property string name
                        required property url picture
                        required property bool selected
                        width: 80
                        height: 80
                        radius: 8
                        color: Qt.rgba(Theme.systemGray.r, Theme.systemGray.g, Theme.systemGray.b, selected ? 0.7 : 0.3)
                        objectName: "tile" + index
                        Accessible.role: Accessible.Button
                        Accessible.name: name
                        Accessible.onPressAction: screen.chooseDishAt(index)
                        RoundedPicture {
                            anchors.fill: parent
                            source: tile.picture
                            fill: false
                        }
                        Rectangle {
                            anchors.fill: parent
                            radius: 8
                            color: "transparent"
                            visible: strip.activeFocus && strip.currentIndex === tile.index
                            border.width: 2
                            border.color: Theme.focusRing
                        }
                        TapHandler { onTapped: screen.chooseDishAt(tile.index) }
                    }
                }
            }
        }

        Rectangle {
            visible: screen.showsProgress
            anchors.centerIn: parent
            width: 120
            height: 120
            radius: 16
            color: "#b0000000"
            Accessible.role: Accessible.ProgressBar
            Accessible.name: qsTr("Loading the dish")
            BusyIndicator {
                anchors.centerIn: parent
                running: parent.visible && screen.downloadFraction < 0
                visible: running
            }
            Column {
                anchors.centerIn: parent
                visible: screen.downloadFraction >= 0
                spacing: 8
                ProgressBar {
                    width: 90
                    value: Math.max(0, screen.downloadFraction)
                }
                Label {
                    anchors.horizontalCenter: parent.horizontalCenter
                    color: "white"
                    text: Math.round(Math.max(0, screen.downloadFraction) * 100) + " %"
                }
            }
        }

        Rectangle {
            objectName: "loadError"
            visible: screen.loadError !== "" && !screen.showsProgress
            anchors.centerIn: parent
            width: Math.min(parent.width - 2 * Theme.padding, 420)
            height: errorColumn.implicitHeight + 2 * Theme.padding
            radius: 12
            color: "#e6ffffff"
            Accessible.role: Accessible.AlertMessage
            Accessible.name: screen.loadError
            Column {
                id: errorColumn
                anchors.centerIn: parent
                width: parent.width - 2 * Theme.padding
                spacing: 10
                Label {
                    width: parent.width
                    objectName: "loadErrorText"
                    text: screen.loadError
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignHCenter
                    color: Theme.primary
                }
                Button {
                    objectName: "retryButton"
                    text: qsTr("Retry")
                    anchors.horizontalCenter: parent.horizontalCenter
                    Accessible.name: text
                    onClicked: screen.retryLoad()
                }
            }
        }

    }

    PictureItem {
        id: thumbnail
        objectName: "thumbnail"
        width: page.width
        height: page.height
        fill: true
        image: screen.capturedImage
        visible: opacity > 0
        x: screen.previewOffset.width
        y: screen.previewOffset.height
        scale: screen.previewScale
        // It comes full size at once (and then shrinks); it leaves with the default animation.
        opacity: 0
        states: State {
            name: "shown"
            when: screen.showsThumbnail
            PropertyChanges { target: thumbnail; opacity: 1 }
        }
        transitions: Transition {
            from: "shown"
            DefaultFade { property: "opacity" }
        }
        Behavior on scale { enabled: screen.previewAnimated; NumberAnimation { duration: 500; easing.type: Easing.InOutQuad } }
        Behavior on x { enabled: screen.previewAnimated; NumberAnimation { duration: 500; easing.type: Easing.InOutQuad } }
        Behavior on y { enabled: screen.previewAnimated; NumberAnimation { duration: 500; easing.type: Easing.InOutQuad } }
        Accessible.role: Accessible.Button
        Accessible.name: qsTr("Open the photo")
        // Takes the tap for itself: the dish strip under the thumbnail does not see it.
        MouseArea {
            anchors.fill: parent
            onClicked: screen.thumbnailTapped()
        }

        // The thumbnail's appear action runs when it comes on screen, and again when a new
        // snapshot replaces the picture it shows.
        readonly property bool shown: screen.showsThumbnail
        function appeared() {
            if (shown) screen.thumbnailAppeared(page.width, page.height)
        }
        onShownChanged: appeared()
        Connections {
            target: screen
            function onCapturedImageChanged() { thumbnail.appeared() }
        }
    }
}
