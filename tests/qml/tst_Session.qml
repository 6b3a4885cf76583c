import QtQml
import QtTest
import Softphone

TestCase {
    id: root

    name: "Session"

    property InstanceChannel channel: null

    function init() {
        failOnWarning(/.?/);
    }

    Component {
        id: clocks

        CallClock {}
    }

    Component {
        id: reconnectors

        Reconnector {}
    }

    Component {
        id: spies

        SignalSpy {}
    }

    function test_durationsAsText() {
        compare(Duration.text(7), "00:07");
        compare(Duration.text(3723), "1:02:03");
        compare(Duration.text(-1), "00:00");
    }

    function test_clockFollowsTheLine() {
        const clock = createTemporaryObject(clocks, root) as CallClock;
        const texts = createTemporaryObject(spies, root, {target: clock, signalName: "textChanged"}) as SignalSpy;
        compare(clock.text, "00:00");
        compare(clock.running, false);
        clock.status = LineStatus.Incoming;
        compare(clock.running, false);
        clock.status = LineStatus.Active;
        compare(clock.running, true);
        clock.onHold = true;
        compare(clock.onHold, true);
        texts.wait();
        compare(clock.elapsed, 1);
        compare(clock.text, "00:01");
        clock.status = LineStatus.Terminated;
        compare(clock.running, false);
        compare(clock.onHold, false);
    }

    function test_reconnectorAsksForAttempts() {
        const reconnector = createTemporaryObject(reconnectors, root) as Reconnector;
        const attempts = createTemporaryObject(spies, root, {target: reconnector, signalName: "attempt"}) as SignalSpy;
        compare(reconnector.state, Reconnector.Idle);
        reconnector.reportLost();
        compare(reconnector.state, Reconnector.Waiting);
        verify(reconnector.remaining <= 4); // 0 by chance
        reconnector.tryNow();
        tryCompare(attempts, "count", 1);
        compare(reconnector.state, Reconnector.Trying);
        reconnector.reportConnected();
        compare(reconnector.state, Reconnector.Connected);
        reconnector.stop();
    }

    function test_channelIsATypeThatScriptsCannotMake() {
        compare(channel, null);
        let message = "";
        try {
            Qt.createQmlObject("import Softphone\nInstanceChannel {}", root);
        } catch (error) {
            message = String(error.message ?? error);
        }
        verify(message.includes("opens its channel before there is an engine"), message);
    }
}
