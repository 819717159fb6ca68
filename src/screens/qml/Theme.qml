pragma Singleton
// The colours and type sizes the screens share.
import QtQuick

QtObject {
    readonly property color systemGray: "#8e8e93"
    readonly property color primary: "#000000"
    readonly property color secondary: "#6e6e73"
    readonly property color focusRing: "#0a84ff"
    readonly property color background: "#ffffff"
    readonly property int title2: 22
    readonly property int headline: 17
    readonly property int subheadline: 15
    readonly property int body: 17
    readonly property int caption2: 11
    readonly property int padding: 16
    // The toolkit's default animation: what shows and hides with it eases in and out together.
    readonly property int defaultAnimationDuration: 350
    // How much larger the scale symbol effect draws a symbol.
    readonly property real symbolEffectScale: 1.2
}
