import QtQml
import QtTest
import Softphone
import SoftphoneTest

TestCase {
    id: root

    name: "Transfers"

    property Transfer kept: null

    function init() {
        failOnWarning(/.?/);
    }

    Component {
        id: owners

        Transfers {}
    }

    function transfers() : Transfers {
        return createTemporaryObject(owners, root) as Transfers;
    }

    function test_download() {
        const owner = transfers();
        const transfer = owner.download({
            url: TinyServer.url,
            headers: {"X-Who": "test"},
            limits: {connect: 5000, stalled: 5000, bytes: 100, schemes: ["http"]},
            retries: 0,
            ifExists: Softphone.IfExists.KeepBoth,
            keepPart: true
        });
        compare(transfer.isFinished, false);
        tryCompare(transfer, "isFinished", true);
        compare(transfer.error, Softphone.TransferError.None, transfer.errorText);
        compare(transfer.status, 200);
        compare(owner.text(transfer), "caffè");
        compare(transfer.body.byteLength, 6);
        compare(owner.header(transfer, "x-shelf"), "upper");
        compare(transfer.done, 6);
    }

    function test_size() {
        const transfer = transfers().size({url: TinyServer.url});
        tryCompare(transfer, "isFinished", true);
        compare(transfer.total, 6);
    }

    function test_post() {
        const owner = transfers();
        const transfer = owner.post({url: TinyServer.url}, "perché");
        tryCompare(transfer, "isFinished", true);
        compare(owner.text(transfer), "perché");
    }

    function test_form() {
        const owner = transfers();
        const transfer = owner.postForm({url: TinyServer.url}, {
            title: "perché",
            count: 3,
            'a "b"': "quoted",
            file: {path: Qt.resolvedUrl("lint"), name: 'a"b.txt', type: "text/plain"}
        });
        tryCompare(transfer, "isFinished", true);
        compare(transfer.error, Softphone.TransferError.None, transfer.errorText);
        const sent = owner.text(transfer);
        verify(sent.includes('name="title"\r\n\r\nperché\r\n'), sent);
        verify(sent.includes('name="count"\r\n\r\n3\r\n'), sent);
        verify(sent.includes('name="a %22b%22"\r\n\r\nquoted\r\n'), sent);
        verify(sent.includes('name="file"; filename="a%22b.txt"\r\n'), sent);
        verify(/\r\ncontent-type: text\/plain\r\n/i.test(sent), sent);
        verify(sent.includes("Fails for any finding of qmllint"), sent);
    }

    function test_wrongFormsThrow_data() {
        return [
            {tag: "list", form: {a: [1]}, type: TypeError, message: '"a"'},
            {tag: "unknown name", form: {a: {paht: "x"}}, type: TypeError, message: '"paht"'},
            {tag: "two lines of headers", form: {a: {path: "x", type: "a\r\nb: c"}}, type: TypeError, message: '"type"'},
            {tag: "no such file", form: {a: {path: Qt.resolvedUrl("missing")}}, type: Error, message: "missing"},
            {tag: "folder", form: {a: {path: Qt.resolvedUrl(".")}}, type: Error, message: "cannot be read"}
        ];
    }

    function test_wrongFormsThrow(row) {
        let thrown = null;
        try {
            transfers().postForm({url: TinyServer.url}, row.form);
        } catch (error) {
            thrown = error;
        }
        compare(thrown?.constructor, row.type);
        verify(thrown.message.includes(row.message), thrown.message);
    }

    function test_madeByTheProgram() {
        const made = Made.transfers;
        const transfer = made.TransfersFunctions.download({url: TinyServer.url});
        tryCompare(transfer, "isFinished", true);
        compare(made.TransfersFunctions.text(transfer), "caffè");
        made.TransfersFunctions.discard(transfer);
    }

    function test_uploadThatCannotRead() {
        const transfer = transfers().upload({url: TinyServer.url, path: Qt.resolvedUrl("missing.bin")});
        tryCompare(transfer, "isFinished", true);
        compare(transfer.error, Softphone.TransferError.CannotRead);
        verify(transfer.errorText.length > 0);
    }

    function test_limitsCount() {
        const transfer = transfers().download({url: TinyServer.url, limits: {bytes: 3}});
        tryCompare(transfer, "isFinished", true);
        compare(transfer.error, Softphone.TransferError.TooLarge);
    }

    function test_redirectsAreLimited() {
        const followed = transfers().download({url: TinyServer.movedUrl, limits: {redirects: 1}});
        tryCompare(followed, "isFinished", true);
        compare(followed.error, Softphone.TransferError.None, followed.errorText);
        const refused = transfers().download({url: TinyServer.movedUrl, limits: {redirects: 0}});
        tryCompare(refused, "isFinished", true);
        compare(refused.error, Softphone.TransferError.TooManyRedirects);
    }

    function test_timeIsLimited() {
        const transfer = transfers().download({url: TinyServer.silentUrl, limits: {total: 100}});
        tryCompare(transfer, "isFinished", true);
        compare(transfer.error, Softphone.TransferError.TimedOut);
    }

    function test_theDigestCounts_data() {
        return [
            {
                tag: "right",
                digest: "07f4328075815d92fe80ac02bdfdebcdae3e72964113e430e86f2ac4d4a455c5",
                error: Softphone.TransferError.None
            },
            {tag: "wrong", digest: "0".repeat(64), error: Softphone.TransferError.WrongDigest}
        ];
    }

    function test_theDigestCounts(row) {
        const transfer = transfers().download({url: TinyServer.url, sha256: row.digest});
        tryCompare(transfer, "isFinished", true);
        compare(transfer.error, row.error, transfer.errorText);
    }

    function test_oneAfterTheOther() {
        const owner = transfers();
        owner.setParallel(1);
        const first = owner.download({url: TinyServer.silentUrl, limits: {total: 300}});
        const second = owner.download({url: TinyServer.url});
        tryCompare(second, "isFinished", true);
        compare(first.isFinished, true);
    }

    function test_wrongRequestsThrow_data() {
        return [
            {tag: "unknown name", request: {url: TinyServer.url, retry: 1}, message: '"retry"'},
            {tag: "wrong kind", request: {url: TinyServer.url, retries: "often"}, message: '"retries"'},
            {tag: "unknown limit", request: {url: TinyServer.url, limits: {bites: 1}}, message: '"limits"'},
            {tag: "limits of the wrong kind", request: {url: TinyServer.url, limits: 1}, message: '"limits"'},
            {tag: "a time of the wrong kind", request: {url: TinyServer.url, limits: {total: "soon"}}, message: '"limits"'},
            {tag: "headers of the wrong kind", request: {url: TinyServer.url, headers: 1}, message: '"headers"'},
            {tag: "no such choice", request: {url: TinyServer.url, ifExists: 3}, message: '"ifExists"'},
            {tag: "neither yes nor no", request: {url: TinyServer.url, keepPart: []}, message: '"keepPart"'}
        ];
    }

    function test_wrongRequestsThrow(row) {
        const owner = transfers();
        let message = "";
        try {
            owner.download(row.request);
        } catch (error) {
            verify(error instanceof TypeError);
            message = error.message;
        }
        verify(message.includes(row.message), message);
    }

    function test_nobodyHasToKeepATransfer() {
        const owner = transfers();
        let ended = null;
        owner.download({url: TinyServer.url}).finished.connect(() => ended = true);
        gc();
        tryVerify(() => ended === true);
    }

    function test_scriptsDiscardAndDoNotDestroy() {
        const owner = transfers();
        kept = owner.download({url: TinyServer.url});
        let message = "";
        try {
            kept.destroy();
        } catch (error) {
            message = String(error);
        }
        verify(message.includes("indestructible"), message);
        owner.discard(kept);
        tryCompare(root, "kept", null);
        owner.discard(null);
    }
}
