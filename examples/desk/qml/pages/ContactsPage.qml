import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// The directory: searched while one types, with the chosen card beside the list, or over it without room.
DeskPage {
    id: page

    property string chosenId: ""
    readonly property var chosen: chosenId === "" ? undefined : Desk.directory.card(chosenId)

    title: Strings.texts["contacts.title"]

    beside: Label {
        text: Desk.loaded ? Strings.texts["contacts.count"].arg(Desk.directory.count.toLocaleString(Qt.locale(), "f", 0)) : ""
        color: Theme.colors.textSecondary
    }

    // A new filter moves the rows; the choice stays with its card.
    Connections {
        target: Desk.directory

        function onModelReset() {
            list.currentIndex = Desk.directory.row(page.chosenId);
            list.positionViewAtBeginning();
        }
    }

    RowLayout {
        anchors.fill: parent
        spacing: Sizes.wide

        ColumnLayout {
            Layout.fillHeight: true
            Layout.fillWidth: true
            Layout.preferredWidth: 3
            visible: !page.narrow || page.chosen === undefined
            spacing: Sizes.gap

            Field {
                id: search

                Layout.fillWidth: true
                glyph: "search"
                focus: true
                placeholderText: Strings.texts["contacts.search"]
                onTextChanged: Desk.directory.filter = text
                Keys.onDownPressed: {
                    list.currentIndex = Math.max(0, list.currentIndex);
                    list.forceActiveFocus(Qt.TabFocusReason);
                }
                Keys.onEscapePressed: clear()
            }

            Item {
                Layout.fillWidth: true
                Layout.fillHeight: true

                ListView {
                    id: list

                    anchors.fill: parent
                    clip: true
                    activeFocusOnTab: true
                    reuseItems: true
                    cacheBuffer: 0 // what lies ahead would be made later, and then be gone already
                    model: Desk.loaded ? Desk.directory : null
                    currentIndex: -1
                    highlightMoveDuration: 0
                    keyNavigationEnabled: true
                    boundsBehavior: Flickable.StopAtBounds
                    Accessible.role: Accessible.List
                    Accessible.name: page.title
                    ScrollBar.vertical: ScrollBar {
                        Accessible.ignored: true
                    }
                    Keys.onReturnPressed: page.chosenId = (currentItem as ContactRow)?.contactId ?? ""

                    delegate: ContactRow {
                        width: list.width - 2 * Sizes.tight
                        x: Sizes.tight
                        onClicked: {
                            list.currentIndex = index;
                            page.chosenId = contactId;
                        }
                        isChosen: contactId === page.chosenId
                    }
                }

                Notice {
                    anchors { left: parent.left; right: parent.right; verticalCenter: parent.verticalCenter }
                    visible: list.count === 0
                    busy: !Desk.loaded
                    text: Strings.texts[Desk.loaded ? "contacts.none" : "contacts.loading"]
                    action: Desk.loaded ? Strings.texts["contacts.clearSearch"] : ""
                    onActed: search.clear()
                }
            }
        }

        ContactView {
            Layout.fillHeight: true
            Layout.fillWidth: true
            Layout.preferredWidth: 2
            visible: !page.narrow || page.chosen !== undefined
            card: page.chosen
            closable: page.narrow
            onClosed: page.chosenId = ""
        }
    }
}
