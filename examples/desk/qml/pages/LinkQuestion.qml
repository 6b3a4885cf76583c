import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import QtQuick.Templates as T
import Softphone
import Desk

/// Asks before an address is opened, and shows the whole of it: what a link says and where it leads may differ.
Popup {
    id: question

    property string target: ""

    function ask(address: string) {
        target = address;
        open();
    }

    function follow() {
        close();
        if (target.startsWith("tel:")) {
            Desk.enter(target);
        } else {
            Qt.openUrlExternally(target);
        }
    }

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(parent.width - 2 * Sizes.wide, Sizes.body * 32)
    padding: Sizes.wide
    modal: true
    focus: true

    background: Rectangle {
        radius: Sizes.radius
        color: Theme.colors.background
        border.color: Theme.colors.border
    }

    contentItem: ColumnLayout {
        spacing: Sizes.margin
        Accessible.role: Accessible.Dialog
        Accessible.name: Strings.texts["chat.openQuestion"]

        Label {
            Layout.fillWidth: true
            text: Strings.texts["chat.openQuestion"]
            font.bold: true
            wrapMode: Text.Wrap
        }

        Label {
            Layout.fillWidth: true
            text: question.target
            wrapMode: Text.WrapAnywhere
            color: Theme.colors.textSecondary
        }

        RowLayout {
            Layout.alignment: Qt.AlignRight
            spacing: Sizes.gap

            Action {
                focus: true
                text: Strings.texts["common.cancel"]
                onClicked: question.close()
            }

            Action {
                filled: true
                text: Strings.texts["common.open"]
                onClicked: question.follow()
            }
        }
    }
}
