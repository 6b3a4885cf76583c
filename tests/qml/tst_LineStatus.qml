import QtTest
import Softphone

TestCase {
    name: "LineStatus"

    function init() {
        failOnWarning(/.?/);
    }

    function test_namesAndNumbersAreThoseOfTheCore() {
        const names = ["Free", "Connecting", "Ringing", "Incoming", "IncomingAsWaitEstablished", "Busy", "Active",
            "ActiveAsSessionProgress", "Terminated", "TerminatedAsBusy", "TerminatedAsAnsweredElsewhere",
            "TerminatedAsTemporaryUnavailable", "Error"];
        for (let number = 0; number < names.length; ++number) {
            compare(LineStatus.name(number), names[number]);
            compare(LineStatus[names[number]], number);
        }
        compare(LineStatus.name(13), "");
    }

    function test_groups() {
        verify(LineStatus.isIncoming(LineStatus.IncomingAsWaitEstablished));
        verify(LineStatus.isActive(LineStatus.ActiveAsSessionProgress));
        verify(LineStatus.isTerminated(LineStatus.TerminatedAsBusy));
        verify(!LineStatus.isIncoming(LineStatus.Active));
        verify(!LineStatus.isActive(LineStatus.Terminated));
        verify(!LineStatus.isTerminated(LineStatus.Error));
    }
}
