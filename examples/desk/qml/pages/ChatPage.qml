import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// A conversation. Links open after a question; what others write stays text.
DeskPage {
    id: page

    title: Strings.texts["chat.title"]

    beside: RowLayout {
        spacing: Sizes.gap

        Avatar {
            initials: "GG"
            size: Sizes.target
        }

        Label {
            text: Desk.partner.name
            font.bold: true
        }
    }

    function send() {
        if (field.text.trim() !== "") {
            Desk.partner.write(field.text);
            field.clear();
        }
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: Sizes.gap

        ListView {
            id: list

            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            activeFocusOnTab: true
            model: Desk.partner
            spacing: Sizes.gap
            boundsBehavior: Flickable.StopAtBounds
            Accessible.role: Accessible.List
            Accessible.name: Desk.partner.name
            ScrollBar.vertical: ScrollBar {
                Accessible.ignored: true
            }
            cacheBuffer: 0 // what is made out of sight stays hidden from screen readers, in Qt 6.8
            highlightMoveDuration: 0
            onCountChanged: {
                currentIndex = count - 1;
                placed.restart();
            }

            delegate: Bubble {
                width: list.width
                onLinkActivated: target => question.ask(target)
                onHeightChanged: if (ListView.isCurrentItem) placed.restart()
            }

            // What is new or has grown has no place before the next turn of the event loop.
            Timer {
                id: placed

                interval: 0
                onTriggered: {
                    list.forceLayout();
                    list.positionViewAtIndex(list.currentIndex, ListView.Contain);
                }
            }
        }

        Label {
            text: Desk.partner.typing ? Strings.texts["chat.typing"].arg(Desk.partner.name) : " "
            font.pixelSize: Sizes.small
            color: Theme.colors.textSecondary
        }

        RowLayout {
            spacing: Sizes.gap

            Field {
                id: field

                Layout.fillWidth: true
                focus: true
                placeholderText: Strings.texts["chat.write"]
                onAccepted: page.send()
            }

            Action {
                filled: true
                glyph: "send"
                directed: true
                text: Strings.texts["chat.send"]
                enabled: field.text.trim() !== ""
                onClicked: page.send()
            }
        }
    }

    LinkQuestion {
        id: question
    }
}
