import QtQuick
import QtQuick.Controls.Basic
import Softphone
import Desk

/// An entry of the list of pages; without room a sign alone.
TabButton {
    id: item

    required property string glyph
    property bool compact: false
    /// Whether it has its sign and, while it is chosen, its bold text, which take longer than the plain text.
    property bool complete: true

    implicitWidth: compact ? Sizes.target + Sizes.gap : Math.round(Sizes.body * 13)
    implicitHeight: Sizes.target + Sizes.tight
    hoverEnabled: true
    autoExclusive: true
    Accessible.name: text
    ToolTip.text: text
    ToolTip.visible: compact && hovered
    ToolTip.delay: 600
    Keys.onDownPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)
    Keys.onUpPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)

    contentItem: Item {
        Row {
            anchors.verticalCenter: parent.verticalCenter
            anchors.left: parent.left
            anchors.leftMargin: item.compact ? (parent.width - Sizes.icon) / 2 : Sizes.margin
            spacing: Sizes.margin

            Loader {
                anchors.verticalCenter: parent.verticalCenter
                width: Sizes.icon
                height: Sizes.icon
                active: item.complete
                // By the name of its file, which is not read before there is a sign to draw.
                Component.onCompleted: setSource("Glyph.qml", {
                    name: item.glyph,
                    color: Qt.binding(() => item.checked ? Theme.colors.accent : Theme.colors.textSecondary)
                })
            }

            Label {
                anchors.verticalCenter: parent.verticalCenter
                visible: !item.compact
                text: item.text
                color: item.checked ? Theme.colors.text : Theme.colors.textSecondary
                font.bold: item.checked && item.complete
                Accessible.ignored: true
            }
        }
    }

    background: Rectangle {
        radius: Sizes.radius
        color: item.checked ? Theme.colors.backgroundSelected
                            : item.hovered ? Theme.colors.backgroundHovered : "transparent"
        border.width: item.visualFocus ? 2 : 0
        border.color: Theme.colors.borderFocused
    }
}
