import QtQuick
import Softphone

/// A line without a telephone behind it: it goes through the states of a call by itself. Numbers that end in 9
/// are busy.
QtObject {
    id: line

    property string number: ""
    property string tones: ""
    property var ahead: []
    property bool wasActive: false

    readonly property CallClock clock: CallClock {}
    readonly property bool inCall: clock.status !== LineStatus.Free && !LineStatus.isTerminated(clock.status)
    readonly property bool talking: LineStatus.isActive(clock.status)

    /// A call is over; \a call is a row of Calls.
    signal ended(var call)

    readonly property Timer pace: Timer {
        interval: 900
        onTriggered: line.advance()
    }

    function dial(number: string) {
        if (number === "" || inCall) {
            return;
        }
        line.number = number;
        tones = "";
        wasActive = false;
        clock.status = LineStatus.Connecting;
        ahead = [LineStatus.Ringing, number.endsWith("9") ? LineStatus.TerminatedAsBusy : LineStatus.Active];
        pace.restart();
    }

    function advance() {
        enter(ahead[0] ?? LineStatus.Free);
        ahead = ahead.slice(1);
        if (ahead.length > 0 || !talking && clock.status !== LineStatus.Free) {
            pace.restart();
        }
    }

    function enter(status: int) {
        wasActive = wasActive || LineStatus.isActive(status);
        clock.status = status;
        if (LineStatus.isTerminated(status)) {
            ended({number: number, direction: "outgoing", when: new Date(), seconds: wasActive ? clock.elapsed : -1});
        }
    }

    function hangUp() {
        ahead = [];
        enter(LineStatus.Terminated);
        pace.restart();
    }
}
