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
    /// What is said of the errors that have a text; the others tell themselves, in English.
    readonly property var reasons: ({
        [Softphone.TransferError.Stalled]: "files.hasStalled",
        [Softphone.TransferError.Truncated]: "files.wasCut",
        [Softphone.TransferError.HttpStatus]: "files.status",
        [Softphone.TransferError.WrongDigest]: "files.wasChanged",
        [Softphone.TransferError.TooLarge]: "files.wasTooLarge"
    })
    readonly property bool paused: ended && transfer.error === Softphone.TransferError.Cancelled

    Binding on about {
        when: row.transfer !== null
        value: row.stateText()
    }

    good: ended && transfer.error === Softphone.TransferError.None
    bad: ended && !good && !paused
    progress: running || paused ? Math.max(0, transfer.done) / Math.max(1, transfer.total) : -1

    function stateText() : string {
        if (transfer === null) {
            return "";
        }
        if (bad) {
            return Strings.texts[reasons[transfer.error]]?.replace("%1", transfer.status) ?? transfer.errorText;
        }
        if (good) {
            return Strings.texts["files.done"].arg(size(transfer.done));
        }
        if (transfer.total <= 0) {
            return Strings.texts[paused ? "files.paused" : "files.waiting"];
        }
        const amount = Strings.texts["files.of"].arg(size(transfer.done)).arg(size(transfer.total));
        const parts = paused ? [Strings.texts["files.paused"], amount] : [amount, size(transfer.bytesPerSecond) + "/s"];
        if (transfer.remaining >= 0) {
            parts.push(Strings.texts["files.left"].arg(transfer.remaining));
        }
        return parts.join(" · ");
    }

    function size(bytes: real) : string {
        return Qt.locale().formattedDataSize(bytes, 1);
    }

    function restart() {
        transfers.discard(transfer);
        transfer = transfers.download(request);
    }

    Action {
        readonly property string key: row.running ? "files.pause" : !row.ended ? "files.get"
            : row.bad || row.good ? "files.again" : "files.resume"

        glyph: row.running ? "pause" : !row.ended ? "download" : row.paused ? "play" : "retry"
        text: Strings.texts[key]
        Accessible.name: text + ", " + row.name
        onClicked: row.running ? row.transfer.cancel() : row.restart()
    }
}
