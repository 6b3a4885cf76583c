import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// The call: who, what the line does, how long, and what can be done about it.
Rectangle {
    id: panel

    readonly property PretendedLine line: Desk.line
    readonly property bool isIdle: line.clock.status === LineStatus.Free
    readonly property string caller: isIdle ? "" : Desk.nameOf(line.number)
    readonly property string stateText: {
        switch (line.clock.status) {
        case LineStatus.Free: return "line.idle";
        case LineStatus.Connecting: return "line.dialling";
        case LineStatus.Ringing: return "line.ringing";
        case LineStatus.Active: return line.clock.onHold ? "line.onHold" : "line.connected";
        case LineStatus.TerminatedAsBusy: return "call.busy";
        default: return "call.ended";
        }
    }

    implicitHeight: content.implicitHeight + 2 * Sizes.wide
    radius: Sizes.radius
    color: Theme.colors.backgroundRaised
    Accessible.role: Accessible.Pane
    Accessible.name: Strings.texts[stateText]

    Notice {
        anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter; margins: Sizes.wide }
        visible: panel.isIdle
        glyph: "phone"
        text: Strings.texts["line.idle"]
    }

    ColumnLayout {
        id: content

        anchors { fill: parent; margins: Sizes.wide }
        visible: !panel.isIdle
        spacing: Sizes.margin

        Item {
            Layout.fillHeight: true
        }

        Avatar {
            Layout.alignment: Qt.AlignHCenter
            initials: Desk.directory.caller(panel.line.number)?.initials ?? "#"
            size: Sizes.target * 2
        }

        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: panel.caller
            font.pixelSize: Math.round(Sizes.body * 1.25)
            font.bold: true
        }

        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            text: Strings.texts[panel.stateText]
            color: panel.line.clock.onHold ? Theme.colors.callOnHold : Theme.colors.textSecondary
        }

        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            visible: panel.line.wasActive
            text: panel.line.clock.text
            font.pixelSize: Sizes.title
        }

        Label {
            Layout.fillWidth: true
            horizontalAlignment: Text.AlignHCenter
            visible: panel.line.tones !== ""
            text: Strings.texts["dial.tones"].arg(panel.line.tones)
            wrapMode: Text.WrapAnywhere
            color: Theme.colors.textSecondary
        }

        Item {
            Layout.fillHeight: true
        }

        GridLayout {
            Layout.fillWidth: true
            columns: width < 2 * Math.max(hold.implicitWidth, hangUp.implicitWidth) + columnSpacing ? 1 : 2
            columnSpacing: Sizes.gap
            rowSpacing: Sizes.gap
            visible: panel.line.inCall

            Action {
                id: hold

                Layout.fillWidth: true
                Layout.preferredWidth: 1
                glyph: panel.line.clock.onHold ? "play" : "pause"
                text: Strings.texts[panel.line.clock.onHold ? "call.resume" : "call.hold"]
                enabled: panel.line.talking
                onClicked: panel.line.clock.onHold = !panel.line.clock.onHold
            }

            Action {
                id: hangUp

                Layout.fillWidth: true
                Layout.preferredWidth: 1
                filled: true
                fill: Theme.colors.error
                glyph: "phone"
                glyphRotation: 135
                text: Strings.texts["call.hangUp"]
                onClicked: panel.line.hangUp()
            }
        }
    }
}
