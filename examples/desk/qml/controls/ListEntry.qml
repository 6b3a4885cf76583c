import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// A line of a list of things: what it is, how it stands, and what can be done with it.
Rectangle {
    id: entry

    required property string name
    required property string about
    property string glyph: "download"
    property bool good: false
    property bool bad: false
    /// Between 0 and 1 where something is on its way; negative: nothing is.
    property real progress: -1
    default property alias actions: actions.data

    implicitHeight: row.implicitHeight + 2 * Sizes.tight
    radius: Sizes.radius
    color: Theme.colors.backgroundRaised
    Accessible.role: Accessible.ListItem
    Accessible.name: name + ", " + about

    RowLayout {
        id: row

        anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter
            leftMargin: Sizes.margin; rightMargin: Sizes.gap }
        spacing: Sizes.margin

        Glyph {
            name: entry.good ? "done" : entry.bad ? "warning" : entry.glyph
            color: entry.good ? Theme.colors.success : entry.bad ? Theme.colors.error : Theme.colors.textSecondary
        }

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            Label {
                Layout.fillWidth: true
                text: entry.name
                elide: Text.ElideMiddle
                font.bold: true
                horizontalAlignment: Text.AlignLeft
                Accessible.ignored: true
            }

            Label {
                Layout.fillWidth: true
                text: entry.about
                wrapMode: Text.Wrap
                font.pixelSize: Sizes.small
                color: entry.bad ? Theme.colors.error : Theme.colors.textSecondary
                horizontalAlignment: Text.AlignLeft
                Accessible.ignored: true
            }

            ProgressBar {
                id: bar

                Layout.fillWidth: true
                visible: entry.progress >= 0
                value: entry.progress
                Accessible.name: entry.name

                background: Rectangle {
                    implicitHeight: 4
                    radius: 2
                    color: Theme.colors.border
                }
                contentItem: Item {
                    Rectangle {
                        x: bar.mirrored ? parent.width - width : 0
                        width: bar.position * parent.width
                        height: parent.height
                        radius: 2
                        color: Theme.colors.accent
                    }
                }
            }
        }

        RowLayout {
            id: actions
        }
    }
}
