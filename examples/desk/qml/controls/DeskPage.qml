import QtQuick
import QtQuick.Layouts
import Softphone
import Desk

/// A page: its title, what may stand beside it, and its content below.
FocusScope {
    id: page

    required property string title
    property alias beside: header.data
    default property alias content: body.data
    /// Whether there is no room for two columns.
    readonly property bool narrow: width < Sizes.body * 44

    focus: true
    Accessible.role: Accessible.Pane
    Accessible.name: title

    ColumnLayout {
        anchors { fill: parent; margins: Sizes.wide; bottomMargin: Sizes.margin }
        spacing: Sizes.margin

        RowLayout {
            id: header

            Layout.fillWidth: true
            Layout.minimumHeight: Sizes.target
            spacing: Sizes.margin

            // A Label would keep its own role.
            Text {
                Layout.fillWidth: true
                text: page.title
                color: Theme.colors.text
                elide: Text.ElideRight
                horizontalAlignment: Text.AlignLeft
                font.family: Theme.fontFamily
                font.pixelSize: Sizes.title
                font.bold: true
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
        }

        Item {
            id: body

            Layout.fillWidth: true
            Layout.fillHeight: true
        }
    }
}
