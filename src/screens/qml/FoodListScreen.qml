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
            Layout.topMargin: Theme.padding
            Layout.bottomMargin: Theme.padding
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
                objectName: "title"
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

        // Two flexible columns; each row is as tall as its taller card, so a card without a
        // picture takes only the height of its name and price.
        Flickable {
            id: grid
            objectName: "menuGrid"
            readonly property int count: cards.count
            readonly property real columnWidth: (width - 2 * Theme.padding - cells.columnSpacing) / 2
            property int currentIndex: 0
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            focus: true
            contentWidth: width
            contentHeight: cells.height + 2 * Theme.padding
            boundsBehavior: Flickable.StopAtBounds
            Accessible.role: Accessible.List
            Accessible.name: qsTr("Menu")
            ScrollBar.vertical: ScrollBar {}

            // The arrows move through the cards, Return or Enter opens the current one.
            function moveBy(step) {
                const next = currentIndex + step
                if (next < 0 || next >= count) return
                currentIndex = next
                positionViewAtIndex(next, 0)
            }
            // Scrolls just enough to show card `index` whole: a list view's Contain mode. `mode`
            // keeps the list view's signature, which the sample app's walkthrough calls.
            function positionViewAtIndex(index: int, mode: int) {
                const card = cards.itemAt(index)
                if (!card) return
                const top = cells.y + card.y, bottom = top + card.height
                if (top < contentY) contentY = top
                else if (bottom > contentY + height) contentY = bottom - height
            }
            Keys.onUpPressed: moveBy(-2)
            Keys.onDownPressed: moveBy(2)
            Keys.onLeftPressed: moveBy(-1)
            Keys.onRightPressed: moveBy(1)
            Keys.onReturnPressed: list.tapAt(currentIndex)
            Keys.onEnterPressed: list.tapAt(currentIndex)

            Grid {
                id: cells
                x: Theme.padding
                y: Theme.padding
                columns: 2
                columnSpacing: 8
                rowSpacing: 8

                Repeater {
                    id: cards
                    model: list.cards
                    delegate: Item {
                        id: card
                        required property int index
                        required property string name
                        required property string priceText
                        required property url picture
                        required property bool hasPicture
                        width: grid.columnWidth
                        height: column.implicitHeight + 8
                        objectName: "card" + index
                        Accessible.role: Accessible.Button
                        Accessible.name: name + ", " + priceText
                        Accessible.onPressAction: list.tapAt(index)

                        Rectangle {
                            anchors.fill: parent
                            radius: 12
                            color: "transparent"
                            border.width: grid.activeFocus && grid.currentIndex === card.index ? 2 : 0
                            border.color: Theme.focusRing
                        }
                        Column {
                            id: column
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
                                objectName: "name"
                                text: card.name
                                font.pixelSize: Theme.headline
                                font.weight: Font.DemiBold
                                color: Theme.primary
                                width: Math.min(implicitWidth, grid.columnWidth - 8)
                                elide: Text.ElideRight
                                anchors.horizontalCenter: parent.horizontalCenter
                                Accessible.ignored: true
                            }
                            Label {
                                objectName: "price"
                                text: card.priceText
                                font.pixelSize: Theme.subheadline
                                color: Theme.secondary
                                anchors.horizontalCenter: parent.horizontalCenter
                                Accessible.ignored: true
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
    }
}
