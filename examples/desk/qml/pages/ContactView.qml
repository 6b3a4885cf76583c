import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// The card of one contact: who it is, and each way to reach them.
Rectangle {
    id: view

    property var card
    property bool closable: false

    signal closed

    readonly property var labels: ({
        [ContactReferenceType.Type.Extension]: "point.extension",
        [ContactReferenceType.Type.Work]: "point.work",
        [ContactReferenceType.Type.Mobile]: "point.mobile",
        [ContactReferenceType.Type.Home]: "point.home",
        [ContactReferenceType.Type.Fax]: "point.fax",
        [ContactReferenceType.Type.Other]: "point.other",
        [ContactReferenceType.Type.Email]: "point.email"
    })

    radius: Sizes.radius
    color: Theme.colors.backgroundRaised
    Accessible.role: Accessible.Pane
    Accessible.name: card?.displayName ?? Strings.texts["contacts.choose"]

    Notice {
        anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: Sizes.wide }
        visible: view.card === undefined
        text: Strings.texts["contacts.choose"]
    }

    Scroller {
        anchors.fill: parent
        visible: view.card !== undefined

        ColumnLayout {
            width: parent.width
            spacing: Sizes.gap

            Action {
                Layout.margins: Sizes.gap
                visible: view.closable
                bare: true
                glyph: "back"
                directed: true
                text: Strings.texts["common.back"]
                onClicked: view.closed()
            }

            Avatar {
                Layout.alignment: Qt.AlignHCenter
                Layout.topMargin: view.closable ? 0 : Sizes.wide
                initials: view.card?.initials ?? ""
                size: Sizes.target * 2
            }

            Label {
                Layout.fillWidth: true
                Layout.leftMargin: Sizes.margin
                Layout.rightMargin: Sizes.margin
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                text: view.card?.displayName ?? ""
                font.pixelSize: Math.round(Sizes.body * 1.25)
                font.bold: true
            }

            Label {
                Layout.fillWidth: true
                Layout.leftMargin: Sizes.margin
                Layout.rightMargin: Sizes.margin
                Layout.bottomMargin: Sizes.gap
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                text: [view.card?.department, view.card?.company].filter(part => part).join(" · ")
                visible: text !== ""
                color: Theme.colors.textSecondary
            }

            Repeater {
                model: view.card?.points ?? []

                PointRow {
                    required property contactPoint modelData

                    Layout.fillWidth: true
                    label: Strings.texts[view.labels[modelData.type]]
                    value: modelData.value
                    isEmail: modelData.type === ContactReferenceType.Type.Email
                }
            }
        }
    }
}
