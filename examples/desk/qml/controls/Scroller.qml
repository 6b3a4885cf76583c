import QtQuick
import QtQuick.Controls.Basic
import Desk

/// A column that scrolls where it has no room, also to whatever the keyboard comes to.
Flickable {
    id: scroller

    default property alias content: column.data
    property alias spacing: column.spacing

    readonly property Item focused: Window.activeFocusItem

    contentHeight: column.height
    clip: true
    boundsBehavior: Flickable.StopAtBounds

    ScrollBar.vertical: ScrollBar {
        Accessible.ignored: true
    }

    function holds(item: Item) : bool {
        return item !== null && (item === column || holds(item.parent));
    }

    onFocusedChanged: {
        if (!holds(focused)) {
            return;
        }
        const top = focused.mapToItem(column, 0, 0).y - Sizes.gap;
        const bottom = top + focused.height + 2 * Sizes.gap;
        contentY = Math.max(0, Math.min(top, Math.max(contentY, bottom - height)));
    }

    Column {
        id: column

        // Room for borders, which would be cut off.
        x: 1
        width: scroller.width - 2
    }
}
