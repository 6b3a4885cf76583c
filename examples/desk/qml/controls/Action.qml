import QtQuick
import QtQuick.Controls.Basic
import Softphone
import Desk

/// A button: filled when it is what the page is for, else outlined; a sign alone when it has no room for words.
Button {
    id: action

    property string glyph: ""
    property bool directed: false
    property int glyphRotation: 0
    property bool filled: false
    property color fill: Theme.colors.accent
    property bool bare: false

    readonly property color ink: !enabled ? Theme.colors.textDisabled
                                          : filled ? Theme.colors.textInverted : Theme.colors.text

    implicitHeight: Math.max(Sizes.target, contentItem.implicitHeight + Sizes.gap)
    leftPadding: display === AbstractButton.IconOnly ? Sizes.gap : Sizes.margin
    rightPadding: leftPadding
    implicitWidth: Math.max(implicitHeight, contentItem.implicitWidth + leftPadding + rightPadding)
    hoverEnabled: true

    Accessible.name: text
    ToolTip.text: text
    ToolTip.visible: hovered && display === AbstractButton.IconOnly
    ToolTip.delay: 600

    contentItem: SignAndText {
        glyph: action.glyph
        directed: action.directed
        glyphRotation: action.glyphRotation
        text: action.display === AbstractButton.IconOnly ? "" : action.text
        ink: action.ink
        bold: action.filled
    }

    background: Rectangle {
        radius: Sizes.radius
        border.width: action.visualFocus ? 2 : action.filled || action.bare ? 0 : 1
        border.color: action.visualFocus ? (action.filled ? Theme.colors.text : Theme.colors.borderFocused)
                                         : Theme.colors.border
        color: !action.filled ? (action.enabled && (action.hovered || action.down)
                                     ? Theme.colors.backgroundHovered
                                     : action.bare ? "transparent" : Theme.colors.background)
                              : action.enabled ? (action.down ? Qt.darker(action.fill, 1.15) : action.fill)
                                               : Theme.colors.backgroundSunken
    }
}
