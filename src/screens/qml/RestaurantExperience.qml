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
        // Screens change at once. The stack ignores presses while a screen moves in or out,
        // and where frames are slow that lasts long after the new screen shows: a guest's
        // first tap on it would be lost (or, on a sliding screen, miss its moving button).
        pushEnter: null
        pushExit: null
        popEnter: null
        popExit: null
        replaceEnter: null
        replaceExit: null
        initialItem: FoodListScreen {
            container: root.experience ? root.experience.container : null
            onBackRequested: root.experience.dismiss()
        }
    }
    Keys.onEscapePressed: if (stack.currentItem) stack.currentItem.closeTopScreen()
}
