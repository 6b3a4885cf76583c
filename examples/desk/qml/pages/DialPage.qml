import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// Dialling: a field that takes anything, the pad, what will be dialled, and the call.
DeskPage {
    id: page

    readonly property string dialled: Numbers.dialString(Desk.number, Desk.region)
    readonly property var understood: dialled === "" ? undefined : Numbers.parse(dialled, Desk.region)
    readonly property string warning: {
        const service = Numbers.emergencyService(dialled);
        if (service !== "") {
            return Strings.texts["call.emergency"] + ": " + (Strings.texts["emergency." + dialled] ?? service);
        }
        switch (understood?.kind) {
        case Softphone.NumberKind.PremiumRate:
            return Strings.texts["dial.premium"];
        case Softphone.NumberKind.SharedCost:
            return Strings.texts["dial.sharedCost"];
        }
        return "";
    }

    title: Strings.texts["dial.title"]

    function press(key: string) {
        if (Desk.line.talking) {
            Desk.line.tones += key;
        } else {
            Desk.number = Numbers.formatAsTyped(Desk.number + key, Desk.region);
        }
    }

    DropArea {
        anchors.fill: parent
        onDropped: drop => Desk.enter(drop.hasUrls ? drop.urls[0].toString() : drop.text)
    }

    Scroller {
        id: scroller

        anchors.fill: parent

        GridLayout {
            width: parent.width
            height: Math.max(implicitHeight, scroller.height)
            columns: page.narrow ? 1 : 2
            columnSpacing: Sizes.wide
            rowSpacing: Sizes.margin

            ColumnLayout {
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                Layout.alignment: Qt.AlignTop
                spacing: Sizes.margin

                NumberField {
                    id: field

                    Layout.fillWidth: true
                    focus: true
                    onAccepted: Desk.line.dial(page.dialled)
                }

                Label {
                    Layout.fillWidth: true
                    text: page.dialled === "" ? Strings.texts["dial.hint"]
                                              : Strings.texts["dial.willDial"].arg(page.dialled)
                    color: Theme.colors.textSecondary
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignLeft
                }

                Banner {
                    Layout.fillWidth: true
                    visible: text !== ""
                    text: page.warning
                }

                Keypad {
                    Layout.fillWidth: true
                    onPressed: key => page.press(key)
                }

                Action {
                    Layout.fillWidth: true
                    filled: true
                    fill: Theme.colors.success
                    glyph: "phone"
                    text: Strings.texts["call.start"]
                    enabled: page.dialled !== "" && !Desk.line.inCall
                    onClicked: Desk.line.dial(page.dialled)
                }
            }

            CallPanel {
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                Layout.fillHeight: true
                Layout.minimumHeight: implicitHeight
            }
        }
    }
}
