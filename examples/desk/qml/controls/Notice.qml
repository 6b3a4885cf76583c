import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// What a page says when it has nothing to show: one sentence, and at most one thing to do.
ColumnLayout {
    id: notice

    required property string text
    property string glyph: "contacts"
    property string action: ""
    property bool busy: false

    signal acted

    spacing: Sizes.margin

    BusyIndicator {
        Layout.alignment: Qt.AlignHCenter
        visible: notice.busy
        running: visible
        palette.dark: Theme.colors.accent
        Accessible.ignored: true
    }

    Glyph {
        Layout.alignment: Qt.AlignHCenter
        visible: !notice.busy
        name: notice.glyph
        size: Sizes.icon * 2
        color: Theme.colors.textSecondary
    }

    Label {
        Layout.fillWidth: true
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        text: notice.text
        color: Theme.colors.textSecondary
    }

    Action {
        Layout.alignment: Qt.AlignHCenter
        visible: notice.action !== ""
        text: notice.action
        onClicked: notice.acted()
    }
}
