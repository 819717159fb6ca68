// The menu: a header with the back arrow and "Our Menu", a divider, and a two-column grid of
// the dishes (picture, name, price). A tap on a card opens the dish screen.
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import OrvantaARFoodSDK

FocusScope {
    id: page
    required property var container
    signal backRequested()

    function closeTopScreen() { list.back() }

    FoodList {
        id: list
        viewModel: page.container ? page.container.foodVM : null
        onDismissRequested: page.backRequested()
        onNavigateToFoodARChanged: {
            if (navigateToFoodAR) page.StackView.view.push(foodARScreen)
        }
    }
    StackView.onActivated: if (page.container) page.container.appear()

    Component {
        id: foodARScreen
        FoodARScreen {
            foodVM: list.viewModel
            onScreenRemoved: list.navigateToFoodAR = false
        }
    }

    Rectangle { anchors.fill: parent; color: Theme.background }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        RowLayout {
            Layout.fillWidth: true
            Layout.topMargin: Theme.padding / 2
            Layout.bottomMargin: Theme.padding / 2
            spacing: 0
            ToolButton {
                id: backButton
                objectName: "backButton"
                Layout.leftMargin: Theme.padding
                Accessible.name: qsTr("Back")
                Accessible.role: Accessible.Button
                contentItem: SymbolIcon { name: "chevron.left"; color: Theme.primary; implicitWidth: 22; implicitHeight: 22 }
                onClicked: list.back()
            }
            Label {
                text: qsTr("Our Menu")
                font.pixelSize: Theme.title2
                font.bold: true
                color: Theme.primary
                Layout.leftMargin: Theme.padding
                Layout.rightMargin: Theme.padding
                Accessible.role: Accessible.Heading
            }
            Item { Layout.fillWidth: true }
        }

        Rectangle { Layout.fillWidth: true; height: 1; color: "#d1d1d6" }

        GridView {
            id: grid
            objectName: "menuGrid"
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.margins: Theme.padding
            clip: true
            focus: true
            keyNavigationEnabled: true
            model: list.cards
            cellWidth: Math.floor(width / 2)
            cellHeight: 150 + 64
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Menu")
            ScrollBar.vertical: ScrollBar {}

            Keys.onReturnPressed: list.tapAt(currentIndex)
            Keys.onEnterPressed: list.tapAt(currentIndex)

            delegate: Item {
                id: card
                required property int index
                required property string name
                required property string priceText
                required property url picture
                required property bool hasPicture
                width: grid.cellWidth
                height: grid.cellHeight
                objectName: "card" + index
                Accessible.role: Accessible.Button
                Accessible.name: name + ", " + priceText
                Accessible.onPressAction: list.tapAt(index)

                Rectangle {
                    anchors.fill: parent
                    anchors.margins: 2
                    radius: 12
                    color: "transparent"
                    border.width: grid.activeFocus && grid.currentIndex === card.index ? 2 : 0
                    border.color: Theme.focusRing
                }
                Column {
                    anchors.centerIn: parent
                    spacing: 6
                    RoundedPicture {
                        visible: card.hasPicture
                        width: 150
                        height: 150
                        source: card.picture
                        anchors.horizontalCenter: parent.horizontalCenter
                    }
                    Label {
                        text: card.name
                        font.pixelSize: Theme.headline
                        font.weight: Font.DemiBold
                        color: Theme.primary
                        width: Math.min(implicitWidth, grid.cellWidth - 8)
                        elide: Text.ElideRight
                        anchors.horizontalCenter: parent.horizontalCenter
                    }
                    Label {
                        text: card.priceText
                        font.pixelSize: Theme.subheadline
                        color: Theme.secondary
                        anchors.horizontalCenter: parent.horizontalCenter
                    }
                }
                TapHandler {
                    onTapped: {
                        grid.currentIndex = card.index
                        list.tapAt(card.index)
                    }
                }
            }
        }
    }
}
