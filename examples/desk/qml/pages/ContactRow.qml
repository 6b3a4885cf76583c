import QtQuick
import QtQuick.Controls.Basic
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
    required property var departmentHits
    required property var numberHits

    property bool isChosen: false
    /// What is below the name: the company, unless the search has found the department instead.
    readonly property bool showsDepartment: departmentHits.length > 0 && companyHits.length === 0
    readonly property int numberShown: numberHits.length > 0 ? numberHits[0].index : 0

    highlighted: ListView.isCurrentItem && ListView.view.activeFocus
    hoverEnabled: true
    Accessible.name: name
    Accessible.selected: isChosen

    implicitHeight: avatar.height + 2 * Sizes.gap

    // Placed by anchors: layouts would be half of the time that a row takes.
    Avatar {
        id: avatar

        anchors { left: parent.left; leftMargin: Sizes.gap; verticalCenter: parent.verticalCenter }
        initials: row.initials
    }

    HitLabel {
        id: nameLabel

        anchors { left: avatar.right; right: numberLabel.right; bottom: parent.verticalCenter
            leftMargin: Sizes.margin; bottomMargin: 1 }
        plain: row.name
        hits: row.nameHits
        font.bold: true
        Accessible.ignored: true
    }

    HitLabel {
        id: companyLabel

        anchors { left: nameLabel.left; right: numberLabel.left; top: parent.verticalCenter
            rightMargin: Sizes.gap; topMargin: 1 }
        plain: row.showsDepartment ? row.department : row.company
        hits: row.showsDepartment ? row.departmentHits : row.companyHits
        font.pixelSize: Sizes.small
        color: Theme.colors.textSecondary
        Accessible.ignored: true
    }

    HitLabel {
        id: numberLabel

        anchors { right: parent.right; baseline: companyLabel.baseline; rightMargin: Sizes.gap }
        width: Math.min(wanted, row.width / 2)
        plain: row.numbers[row.numberShown] ?? ""
        hits: row.numberHits.filter(hit => hit.index === row.numberShown)
        font.pixelSize: Sizes.small
        color: Theme.colors.textSecondary
        Accessible.ignored: true
    }

    background: Rectangle {
        radius: Sizes.radius
        color: row.isChosen ? Theme.colors.backgroundSelected
                            : row.hovered ? Theme.colors.backgroundHovered : "transparent"
        border.width: row.highlighted ? 2 : 0
        border.color: Theme.colors.borderFocused
    }
}
