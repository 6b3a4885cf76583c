import QtQuick
import Softphone
import Desk

/// One file: what it is while nothing happens, how it comes while it comes, and how that ended.
ListEntry {
    id: row

    required property Transfers transfers
    /// What Transfers takes.
    required property var request

    property Transfer transfer: null
    readonly property bool running: transfer !== null && !transfer.isFinished
    readonly property bool ended: transfer !== null && transfer.isFinished
    readonly property string progressText: {
        if (transfer === null || transfer.total <= 0) {
            return Strings.texts["files.waiting"];
        }
        const locale = Qt.locale();
        const parts = [Strings.texts["files.of"].arg(locale.formattedDataSize(transfer.done, 1))
            .arg(locale.formattedDataSize(transfer.total, 1)), locale.formattedDataSize(transfer.bytesPerSecond, 1) + "/s"];
        return transfer.remaining < 0 ? parts.join(" · ")
                                      : parts.concat(Strings.texts["files.left"].arg(transfer.remaining)).join(" · ");
    }

    Binding on about {
        when: row.transfer !== null
        value: row.running ? row.progressText
                           : row.good ? Strings.texts["files.done"].arg(Qt.locale().formattedDataSize(row.transfer.done, 1))
                                      : row.transfer?.error === Softphone.TransferError.Cancelled
                                        ? Strings.texts["files.paused"] : row.transfer?.errorText ?? ""
    }

    good: ended && transfer.error === Softphone.TransferError.None
    bad: ended && !good && transfer.error !== Softphone.TransferError.Cancelled
    progress: running ? Math.max(0, transfer.done) / Math.max(1, transfer.total) : -1

    function restart() {
        transfers.discard(transfer);
        transfer = transfers.download(request);
    }

    Action {
        readonly property string key: row.running ? "files.pause" : !row.ended ? "files.get"
            : row.bad || row.good ? "files.again" : "files.resume"

        glyph: row.running ? "pause" : !row.ended ? "download" : "retry"
        text: Strings.texts[key]
        Accessible.name: text + ", " + row.name
        onClicked: row.running ? row.transfer.cancel() : row.restart()
    }
}
