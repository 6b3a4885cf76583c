import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// A question with a few answers side by side; answers is a list of objects with text and value.
ColumnLayout {
    id: choice

    required property string question
    required property var answers
    required property var value

    signal chosen(var value)

    spacing: Sizes.gap

    Label {
        text: choice.question
        font.bold: true
    }

    Flow {
        Layout.fillWidth: true
        spacing: Sizes.gap
        Accessible.role: Accessible.Grouping
        Accessible.name: choice.question

        Repeater {
            model: choice.answers

            RadioButton {
                id: answer

                required property var modelData

                text: modelData.text
                checked: modelData.value === choice.value
                implicitHeight: Sizes.target
                leftPadding: Sizes.margin
                rightPadding: Sizes.margin
                hoverEnabled: true
                indicator: null
                Accessible.name: text
                onClicked: choice.chosen(modelData.value)

                contentItem: Label {
                    text: answer.text
                    verticalAlignment: Text.AlignVCenter
                    horizontalAlignment: Text.AlignHCenter
                    color: answer.checked ? Theme.colors.textInverted : Theme.colors.text
                    font.bold: answer.checked
                    Accessible.ignored: true
                }
                background: Rectangle {
                    radius: Sizes.radius
                    color: answer.checked ? Theme.colors.accent
                                          : answer.hovered ? Theme.colors.backgroundHovered : Theme.colors.background
                    border.width: answer.visualFocus ? 2 : answer.checked ? 0 : 1
                    border.color: answer.visualFocus ? (answer.checked ? Theme.colors.text : Theme.colors.borderFocused)
                                                     : Theme.colors.border
                }
            }
        }
    }
}
