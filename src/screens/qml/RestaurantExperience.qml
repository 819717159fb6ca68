// The kit's root view: a navigation stack whose first screen is the menu. Escape closes the top
// screen (the menu closes the experience).
import QtQuick
import QtQuick.Controls
import OrvantaARFoodSDK

FocusScope {
    id: root
    required property var experience

    StackView {
        id: stack
        objectName: "navigationStack"
        anchors.fill: parent
        focus: true
        initialItem: FoodListScreen {
            container: root.experience ? root.experience.container : null
            onBackRequested: root.experience.dismiss()
        }
    }
    Keys.onEscapePressed: if (stack.currentItem) stack.currentItem.closeTopScreen()
}
