import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// The line at the bottom: whether the client is connected, and when it tries again. The connection is pretended,
/// and comes back with the second attempt; the waits are not.
Rectangle {
    id: bar

    readonly property bool isConnected: reconnector.state === Reconnector.Connected
    readonly property string text: {
        switch (reconnector.state) {
        case Reconnector.Waiting:
            return Strings.texts["connection.lost"] + ". " + Strings.texts["connection.retrying"].arg(reconnector.remaining);
        case Reconnector.Trying:
            return Strings.texts["connection.trying"];
        default:
            return Strings.texts["connection.online"];
        }
    }

    implicitHeight: row.implicitHeight + Sizes.gap
    color: Theme.colors.backgroundRaised
    Accessible.role: Accessible.StatusBar
    Accessible.name: text

    Reconnector {
        id: reconnector

        onAttempt: answer.start()
        Component.onCompleted: reportConnected()
    }

    Timer {
        id: answer

        property bool isFirst: true

        interval: 800
        onTriggered: {
            if (isFirst) {
                reconnector.reportLost();
            } else {
                reconnector.reportConnected();
            }
            isFirst = !isFirst;
        }
    }

    Rectangle {
        width: parent.width
        height: 1
        color: Theme.colors.separator
    }

    RowLayout {
        id: row

        anchors { fill: parent; leftMargin: Sizes.margin; rightMargin: Sizes.gap }
        spacing: Sizes.gap

        Rectangle {
            implicitWidth: Math.round(Sizes.body * 0.7)
            implicitHeight: implicitWidth
            radius: implicitWidth / 2
            color: bar.isConnected ? Theme.colors.presenceAvailable
                                   : reconnector.state === Reconnector.Trying ? Theme.colors.presenceAway
                                                                              : Theme.colors.presenceBusy
        }

        Label {
            Layout.fillWidth: true
            text: bar.text
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignLeft
            font.pixelSize: Sizes.small
            color: Theme.colors.textSecondary
        }

        Action {
            bare: true
            glyph: bar.isConnected ? "" : "retry"
            enabled: reconnector.state !== Reconnector.Trying
            text: Strings.texts[bar.isConnected ? "connection.lose" : "connection.tryNow"]
            onClicked: bar.isConnected ? reconnector.reportLost() : reconnector.tryNow()
        }
    }
}
