import QtQuick
import QtQuick.Controls.Basic
import Softphone
import Desk

/// One message. From the keyboard its links are reached one by one.
FocusScope {
    id: bubble

    required property string text
    required property string sample
    required property bool mine
    required property date when

    readonly property string said: sample === "" ? text : Strings.texts[sample]
    readonly property var links: ChatText.findLinks(said, {region: Desk.region})
    readonly property bool atRight: mine !== LayoutMirroring.enabled

    signal linkActivated(string target)

    implicitHeight: box.height
    Accessible.role: Accessible.ListItem
    Accessible.name: (mine ? "" : Desk.partner.name + ": ") + said

    Rectangle {
        id: box

        readonly property real most: bubble.width * 0.78

        x: bubble.atRight ? bubble.width - width - Sizes.gap : 0
        width: Math.min(most, Math.ceil(Math.max(words.implicitWidth, time.implicitWidth)) + 2 * Sizes.margin)
        height: words.height + time.height + 2 * Sizes.gap + (marks.visible ? marks.height + Sizes.tight : 0)
        radius: Sizes.radius * 1.5
        color: bubble.mine ? Theme.colors.backgroundSelected : Theme.colors.backgroundRaised

        Label {
            id: words

            anchors { left: parent.left; right: parent.right; top: parent.top; margins: Sizes.gap
                leftMargin: Sizes.margin; rightMargin: Sizes.margin }
            horizontalAlignment: Text.AlignLeft
            textFormat: Text.RichText
            wrapMode: Text.Wrap
            // Rich text takes the colour of links from the desktop, unless it is told otherwise.
            text: "<style>a { color: " + Theme.colors.link + " }</style>"
                  + ChatText.linkedHtml(bubble.said, {region: Desk.region})
            onLinkActivated: target => bubble.linkActivated(target)
            Accessible.ignored: true

            HoverHandler {
                enabled: words.hoveredLink !== ""
                cursorShape: Qt.PointingHandCursor
            }
        }

        Flow {
            id: marks

            anchors { left: words.left; right: words.right; top: words.bottom; topMargin: Sizes.tight }
            visible: bubble.links.length > 0 && bubble.ListView.isCurrentItem && bubble.ListView.view.activeFocus
            spacing: Sizes.tight

            Repeater {
                model: bubble.links

                Action {
                    required property link modelData

                    width: Math.min(implicitWidth, marks.width)
                    glyph: "link"
                    text: bubble.said.substr(modelData.position, modelData.length)
                    onClicked: bubble.linkActivated(modelData.target.toString())
                }
            }
        }

        Label {
            id: time

            anchors { bottom: parent.bottom; right: parent.right; margins: Sizes.gap; rightMargin: Sizes.margin }
            text: bubble.when.toLocaleTimeString(Qt.locale(), Locale.ShortFormat)
            font.pixelSize: Math.round(Sizes.small * 0.9)
            color: Theme.colors.textSecondary
            Accessible.ignored: true
        }
    }
}
