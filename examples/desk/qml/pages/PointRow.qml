import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// One way to reach a contact, with the button that does it.
RowLayout {
    id: point

    required property string label
    required property string value
    required property bool isEmail

    spacing: Sizes.gap

    ColumnLayout {
        Layout.fillWidth: true
        Layout.leftMargin: Sizes.margin
        spacing: 0

        Label {
            text: point.label
            font.pixelSize: Sizes.small
            color: Theme.colors.textSecondary
        }

        Label {
            Layout.fillWidth: true
            text: point.isEmail ? point.value : Numbers.parse(point.value, Desk.region)?.international ?? point.value
            wrapMode: Text.WrapAnywhere
            horizontalAlignment: Text.AlignLeft
        }
    }

    Action {
        Layout.rightMargin: Sizes.margin
        display: AbstractButton.IconOnly
        bare: true
        glyph: point.isEmail ? "mail" : "phone"
        text: Strings.texts[point.isEmail ? "contacts.write" : "contacts.call"].arg(point.value)
        onClicked: point.isEmail ? Qt.openUrlExternally("mailto:" + point.value) : Desk.call(point.value)
    }
}
