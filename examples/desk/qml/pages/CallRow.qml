import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// One past call.
ItemDelegate {
    id: row

    required property string number
    required property string direction
    required property date when
    required property int seconds

    readonly property var colors: ({
        incoming: Theme.colors.callIncoming, outgoing: Theme.colors.callOutgoing, missed: Theme.colors.callMissed
    })
    readonly property string caller: Desk.loaded ? Desk.nameOf(number) : number
    readonly property string kind: Strings.texts["call." + direction]
    readonly property string outcome: direction === "missed" ? ""
        : seconds < 0 ? Strings.texts["call.noAnswer"] : Strings.texts["call.duration"].arg(Duration.text(seconds))

    function dayText() : string {
        const days = Math.floor((new Date().setHours(0, 0, 0, 0) - new Date(when).setHours(0, 0, 0, 0)) / 86400000);
        return days === 0 ? Strings.texts["history.today"]
                          : days === 1 ? Strings.texts["history.yesterday"]
                                       : when.toLocaleDateString(Qt.locale(), Locale.ShortFormat);
    }

    text: caller
    padding: Sizes.gap
    leftPadding: Sizes.margin
    rightPadding: Sizes.margin
    hoverEnabled: true
    Accessible.role: Accessible.ListItem
    Accessible.name: caller + ", " + kind + ", " + dayText()

    contentItem: RowLayout {
        spacing: Sizes.margin

        Glyph {
            name: row.direction
            color: row.colors[row.direction]
            directed: true
        }

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            Label {
                Layout.fillWidth: true
                text: row.caller
                elide: Text.ElideRight
                horizontalAlignment: Text.AlignLeft
                font.bold: true
                color: row.direction === "missed" ? Theme.colors.callMissed : Theme.colors.text
                Accessible.ignored: true
            }

            Label {
                Layout.fillWidth: true
                text: row.outcome === "" ? row.kind : row.kind + " · " + row.outcome
                elide: Text.ElideRight
                horizontalAlignment: Text.AlignLeft
                font.pixelSize: Sizes.small
                color: Theme.colors.textSecondary
                Accessible.ignored: true
            }
        }

        ColumnLayout {
            spacing: 2

            Label {
                Layout.alignment: Qt.AlignRight
                text: row.when.toLocaleTimeString(Qt.locale(), Locale.ShortFormat)
                font.pixelSize: Sizes.small
                Accessible.ignored: true
            }

            Label {
                Layout.alignment: Qt.AlignRight
                text: row.dayText()
                font.pixelSize: Sizes.small
                color: Theme.colors.textSecondary
                Accessible.ignored: true
            }
        }
    }

    background: Rectangle {
        radius: Sizes.radius
        color: row.hovered ? Theme.colors.backgroundHovered : "transparent"
        border.width: row.ListView.isCurrentItem && row.ListView.view.activeFocus ? 2 : 0
        border.color: Theme.colors.borderFocused
    }
}
