import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// A warning that must not be overlooked.
Rectangle {
    id: banner

    required property string text
    property color ink: Theme.colors.warning

    implicitHeight: row.implicitHeight + 2 * Sizes.gap
    implicitWidth: row.implicitWidth + 2 * Sizes.margin
    radius: Sizes.radius
    color: Theme.colors.background
    border.width: 1
    border.color: ink
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    RowLayout {
        id: row

        anchors { fill: parent; leftMargin: Sizes.margin; rightMargin: Sizes.margin }
        spacing: Sizes.gap

        Glyph {
            name: "warning"
            color: banner.ink
        }

        Label {
            Layout.fillWidth: true
            text: banner.text
            color: banner.ink
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignLeft
            font.bold: true
            Accessible.ignored: true
        }
    }
}
