import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// The twelve keys of a telephone. They stand as on a telephone in every reading direction.
GridLayout {
    id: pad

    signal pressed(string key)

    readonly property var letters: ["", "ABC", "DEF", "GHI", "JKL", "MNO", "PQRS", "TUV", "WXYZ", "", "+", ""]

    columns: 3
    rowSpacing: Sizes.gap
    columnSpacing: Sizes.gap
    layoutDirection: Qt.LeftToRight
    LayoutMirroring.enabled: false
    Accessible.role: Accessible.Grouping
    Accessible.name: Strings.texts["call.keypad"]

    Repeater {
        model: Array.from("123456789*0#")

        Button {
            id: key

            required property int index
            required property string modelData

            Layout.fillWidth: true
            Layout.preferredWidth: 1
            implicitHeight: Math.round(Sizes.target * 1.25)
            text: modelData
            hoverEnabled: true
            onClicked: pad.pressed(modelData)
            onPressAndHold: if (modelData === "0") pad.pressed("+")
            Accessible.name: Strings.texts["dial.key"].arg(modelData)

            contentItem: Item {
                Column {
                    anchors.centerIn: parent

                    Label {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: key.modelData
                        font.pixelSize: Math.round(Sizes.body * 1.25)
                        font.bold: true
                        Accessible.ignored: true
                    }

                    Label {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: pad.letters[key.index]
                        visible: text !== ""
                        font.pixelSize: Math.round(Sizes.small * 0.85)
                        color: Theme.colors.textSecondary
                        Accessible.ignored: true
                    }
                }
            }
            background: Rectangle {
                radius: Sizes.radius
                color: key.down ? Theme.colors.backgroundSelected
                                : key.hovered ? Theme.colors.backgroundHovered : Theme.colors.backgroundRaised
                border.width: key.visualFocus ? 2 : 1
                border.color: key.visualFocus ? Theme.colors.borderFocused : Theme.colors.separator
            }
        }
    }
}
