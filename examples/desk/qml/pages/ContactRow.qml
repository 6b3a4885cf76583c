import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// One contact in the list, with what the search has found in it.
ItemDelegate {
    id: row

    required property int index
    required property string contactId
    required property string name
    required property string initials
    required property string company
    required property string department
    required property var numbers
    required property var nameHits
    required property var companyHits
    required property var numberHits

    property bool isChosen: false
    readonly property int numberShown: numberHits.length > 0 ? numberHits[0].index : 0

    text: name
    highlighted: ListView.isCurrentItem && ListView.view.activeFocus
    leftPadding: Sizes.gap
    rightPadding: Sizes.gap
    topPadding: Sizes.gap
    bottomPadding: Sizes.gap
    hoverEnabled: true
    Accessible.role: Accessible.ListItem
    Accessible.name: name
    Accessible.selected: isChosen

    contentItem: RowLayout {
        spacing: Sizes.margin

        Avatar {
            initials: row.initials
        }

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            HitLabel {
                Layout.fillWidth: true
                plain: row.name
                hits: row.nameHits
                font.bold: true
                Accessible.ignored: true
            }

            RowLayout {
                spacing: Sizes.gap

                HitLabel {
                    Layout.fillWidth: true
                    plain: row.company
                    hits: row.companyHits
                    font.pixelSize: Sizes.small
                    color: Theme.colors.textSecondary
                    Accessible.ignored: true
                }

                HitLabel {
                    Layout.maximumWidth: row.width / 2
                    plain: row.numbers[row.numberShown] ?? ""
                    hits: row.numberHits.filter(hit => hit.index === row.numberShown)
                    font.pixelSize: Sizes.small
                    color: Theme.colors.textSecondary
                    Accessible.ignored: true
                }
            }
        }
    }

    background: Rectangle {
        radius: Sizes.radius
        color: row.isChosen ? Theme.colors.backgroundSelected
                            : row.hovered ? Theme.colors.backgroundHovered : "transparent"
        border.width: row.highlighted ? 2 : 0
        border.color: Theme.colors.borderFocused
    }
}
