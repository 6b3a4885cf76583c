import QtQuick
import QtQuick.Controls.Basic
import Softphone
import Desk

/// Downloads from a server on this machine that is slow, broken or lying by the file, and a recording that its
/// recorder did not end.
DeskPage {
    id: page

    readonly property var files: [
        {name: "handbook.pdf", text: "files.handbook"},
        {name: "ringtone.wav", text: "files.ringtone"},
        {name: "silent.bin", text: "files.stalls", asked: {limits: {stalled: 2000}}},
        {name: "cut.bin", text: "files.endsEarly"},
        {name: "missing.zip", text: "files.isMissing"},
        {name: "changed.zip", text: "files.isChanged", asked: {sha256: "00".repeat(32)}},
        {name: "large.iso", text: "files.isTooLarge", asked: {limits: {bytes: 1048576}}}
    ]

    title: Strings.texts["files.title"]

    FileServer {
        id: server
    }

    Transfers {
        id: downloads
    }

    Recording {
        id: recording
    }

    Scroller {
        anchors.fill: parent
        spacing: Sizes.gap

        Repeater {
            model: page.files

            FileRow {
                required property var modelData

                width: parent.width
                name: modelData.name
                about: Strings.texts[modelData.text]
                transfers: downloads
                request: Object.assign({url: server.url + modelData.name, path: server.target + modelData.name,
                                        keepPart: true}, modelData.asked)
            }
        }

        ListEntry {
            width: parent.width
            glyph: "wave"
            name: "recording.wav"
            about: recording.seconds === 0 ? Strings.texts["files.broken"]
                                           : Strings.texts["files.repaired"].arg(Duration.text(recording.seconds))
            good: recording.seconds > 0

            Action {
                text: Strings.texts["files.repair"]
                enabled: recording.seconds === 0
                onClicked: recording.repair()
            }
        }
    }
}
