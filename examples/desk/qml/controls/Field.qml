import QtQuick
import QtQuick.Controls.Basic
import Softphone
import Desk

/// A line to type in. Its placeholder is its name too.
TextField {
    id: field

    property string glyph: ""

    implicitHeight: Math.max(Sizes.target, contentHeight + 2 * Sizes.gap)
    leftPadding: glyph === "" || mirrored ? Sizes.margin : Sizes.icon + 2 * Sizes.gap
    rightPadding: glyph !== "" && mirrored ? Sizes.icon + 2 * Sizes.gap : Sizes.margin
    readonly property bool mirrored: LayoutMirroring.enabled
    horizontalAlignment: TextInput.AlignLeft
    verticalAlignment: TextInput.AlignVCenter
    selectByMouse: true
    color: Theme.colors.text
    placeholderTextColor: Theme.colors.textSecondary
    selectionColor: Theme.colors.accent
    selectedTextColor: Theme.colors.textInverted
    Accessible.name: placeholderText

    background: Rectangle {
        radius: Sizes.radius
        color: Theme.colors.background
        border.width: field.activeFocus ? 2 : 1
        border.color: field.activeFocus ? Theme.colors.borderFocused : Theme.colors.border

        Glyph {
            x: field.mirrored ? parent.width - width - Sizes.gap : Sizes.gap + 2
            anchors.verticalCenter: parent.verticalCenter
            visible: field.glyph !== ""
            name: field.glyph
            size: Math.round(Sizes.icon * 0.9)
            color: Theme.colors.textSecondary
        }
    }
}
