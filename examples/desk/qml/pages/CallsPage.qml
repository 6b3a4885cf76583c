import QtQuick
import QtQuick.Controls.Basic
import Softphone
import Desk

/// The past calls, with the names that the directory has for their numbers.
DeskPage {
    id: page

    title: Strings.texts["history.title"]

    beside: Action {
        text: Strings.texts["history.clear"]
        visible: Desk.calls.count > 0
        onClicked: Desk.calls.clear()
    }

    ListView {
        id: list

        anchors.fill: parent
        clip: true
        focus: true
        activeFocusOnTab: true
        cacheBuffer: 0 // what lies ahead would be made later, and then be gone already
        model: Desk.calls
        boundsBehavior: Flickable.StopAtBounds
        spacing: 2
        Accessible.role: Accessible.List
        Accessible.name: page.title
        ScrollBar.vertical: ScrollBar {
            Accessible.ignored: true
        }
        Keys.onReturnPressed: (currentItem as CallRow)?.clicked()

        delegate: CallRow {
            width: list.width
            onClicked: Desk.call(number)
        }
    }

    Notice {
        anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
        visible: list.count === 0
        glyph: "clock"
        text: Strings.texts["history.none"]
        action: Strings.texts["call.start"]
        onActed: Desk.pageWanted("dial")
    }
}
