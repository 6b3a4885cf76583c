import QtQuick
import Softphone
import Desk

/// The picture of somebody who has none: the initials on a colour of their own.
Rectangle {
    id: avatar

    property string initials: ""
    property int size: Sizes.target

    readonly property var colors: [Theme.colors.accent, Theme.colors.callOutgoing, Theme.colors.success,
        Theme.colors.warning, Theme.colors.error]

    function colorOf(text: string) : color {
        let sum = 0;
        for (const letter of text) {
            sum += letter.codePointAt(0);
        }
        return colors[sum % colors.length];
    }

    implicitWidth: size
    implicitHeight: size
    radius: size / 2
    color: colorOf(initials)

    Text {
        anchors.centerIn: parent
        text: avatar.initials
        color: Theme.colors.textInverted
        font.pixelSize: Math.round(avatar.size * (avatar.initials.length > 2 ? 0.3 : 0.38))
        font.family: Theme.fontFamily
        font.bold: true
        Accessible.ignored: true
    }
}
