import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Softphone
import Desk

/// The window: the pages by name on one side, the page in front, and the line below. The first frame has the names of
/// the pages alone; pages are made when they are shown for the first time.
ApplicationWindow {
    id: window

    required property InstanceChannel channel
    /// What this copy was started with.
    required property list<string> given

    property int page: 0
    property bool shown: false
    readonly property bool compact: width < Sizes.body * 52
    readonly property var pages: [
        {name: "contacts", text: "contacts.title", glyph: "contacts", source: "pages/ContactsPage.qml"},
        {name: "dial", text: "dial.title", glyph: "keypad", source: "pages/DialPage.qml"},
        {name: "calls", text: "history.title", glyph: "clock", source: "pages/CallsPage.qml"},
        {name: "chat", text: "chat.title", glyph: "chat", source: "pages/ChatPage.qml"},
        {name: "files", text: "files.title", glyph: "download", source: "pages/FilesPage.qml"},
        {name: "settings", text: "settings.title", glyph: "settings", source: "pages/SettingsPage.qml"}
    ]

    function turnTo(name: string) {
        page = pages.findIndex(entry => entry.name === name);
    }

    /// Takes a number that came from outside into the dialling page.
    function takeOver(words: list<string>) {
        const address = words.find(word => word.startsWith("tel:"));
        if (address !== undefined) {
            Desk.enter(address);
            turnTo("dial");
        }
    }

    width: 900
    height: 640
    minimumWidth: 480
    minimumHeight: 420
    visible: true
    title: Application.displayName
    color: Theme.colors.background
    font.family: shown ? Theme.fontFamily : Application.font.family // its files are read then
    font.pixelSize: Sizes.body
    LayoutMirroring.enabled: Application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true

    palette {
        window: Theme.colors.background
        windowText: Theme.colors.text
        base: Theme.colors.background
        text: Theme.colors.text
        button: Theme.colors.backgroundRaised
        buttonText: Theme.colors.text
        highlight: Theme.colors.accent
        highlightedText: Theme.colors.textInverted
        placeholderText: Theme.colors.textSecondary
        link: Theme.colors.link
        mid: Theme.colors.border
        toolTipBase: Theme.colors.backgroundRaised
        toolTipText: Theme.colors.text
    }

    Component.onCompleted: {
        Theme.scheme = Settings.value("scheme", Theme.Desktop);
        Strings.language = Settings.value("language", Strings.language);
    }

    onFrameSwapped: if (!shown) firstFrame.start()
    onShownChanged: takeOver(given)

    Timer {
        id: firstFrame

        interval: 0
        onTriggered: window.shown = true
    }

    Connections {
        target: window.channel

        function onReceived(words, token) {
            window.takeOver(words);
            Front.bring(window, token);
        }
    }

    Connections {
        target: window.shown ? Desk : null

        function onPageWanted(name) {
            window.turnTo(name);
        }
    }

    Shortcut {
        sequences: [StandardKey.Find]
        onActivated: window.turnTo("contacts")
    }

    Instantiator {
        model: window.shown ? window.pages.length : 0

        Shortcut {
            required property int index

            sequence: "Ctrl+" + (index + 1)
            onActivated: window.page = index
        }
    }

    RowLayout {
        anchors { top: parent.top; bottom: connection.top; left: parent.left; right: parent.right }
        spacing: 0

        Rectangle {
            Layout.fillHeight: true
            implicitWidth: navigation.implicitWidth + 2 * Sizes.gap
            color: Theme.colors.backgroundRaised

            Column {
                id: navigation

                anchors { top: parent.top; left: parent.left; margins: Sizes.gap; topMargin: Sizes.wide }
                spacing: Sizes.tight
                Accessible.role: Accessible.PageTabList
                Accessible.name: Application.displayName

                Label {
                    visible: !window.compact
                    width: parent.width
                    leftPadding: Sizes.margin
                    rightPadding: Sizes.margin
                    bottomPadding: Sizes.margin
                    horizontalAlignment: Text.AlignLeft
                    text: Application.displayName
                    font.bold: window.shown
                    color: Theme.colors.accent
                }

                Repeater {
                    model: window.pages

                    NavItem {
                        id: entry

                        required property int index
                        required property var modelData

                        text: Strings.texts[modelData.text]
                        glyph: modelData.glyph
                        compact: window.compact
                        complete: window.shown
                        checked: index === window.page
                        onClicked: window.page = entry.index
                    }
                }
            }
        }

        Rectangle {
            Layout.fillHeight: true
            implicitWidth: 1
            color: Theme.colors.separator
        }

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            Repeater {
                model: window.shown ? window.pages : []

                Loader {
                    required property int index
                    required property var modelData
                    readonly property bool isInFront: index === window.page

                    anchors.fill: parent
                    active: false
                    asynchronous: true
                    visible: isInFront
                    focus: isInFront
                    source: modelData.source
                    onIsInFrontChanged: active = true
                    Component.onCompleted: active = isInFront
                }
            }
        }
    }

    Loader {
        id: connection

        anchors { bottom: parent.bottom; left: parent.left; right: parent.right }
        height: Sizes.target + Sizes.gap
        active: window.shown
        source: "ConnectionBar.qml"
    }
}
