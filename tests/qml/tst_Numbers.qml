import QtTest
import Softphone

TestCase {
    name: "Numbers"

    function init() {
        failOnWarning(/.?/);
    }

    function test_parseGivesAValue() {
        const number = Numbers.parse("06 1234567 int. 12", "IT");
        compare(number.e164, "+39061234567");
        compare(number.national, "06 123 4567 ext. 12");
        compare(number.international, "+39 06 123 4567 ext. 12");
        compare(number.extension, "12");
        compare(number.region, "IT");
        compare(number.kind, Softphone.NumberKind.FixedLine);
        compare(number.valid, true);
        compare(String(number.uri), "tel:+39-06-123-4567;ext=12");
    }

    function test_whatIsNoNumberIsUndefined() {
        compare(Numbers.parse("nobody", "IT"), undefined);
        compare(Numbers.parse("nobody", "IT")?.national ?? "as typed", "as typed");
    }

    function test_dialString() {
        compare(Numbers.dialString("+39 06 1234567", "IT"), "+39061234567");
        compare(Numbers.dialString("+39 06 1234567", "IT", Softphone.PlusSign.DoubleZero), "0039061234567");
    }

    function test_formatAsTyped() {
        compare(Numbers.formatAsTyped("061234567", "IT"), "06 123 4567");
        compare(Numbers.cursorInFormatted("061234567", 5, "06 123 4567"), 6);
    }

    function test_find() {
        const text = "Call 06 1234567 or 338 1234567";
        const found = Numbers.find(text, "IT");
        compare(found.length, 2);
        compare(text.substr(found[0].position, found[0].length), "06 1234567");
        compare(text.substr(found[1].position, found[1].length), "338 1234567");
        compare(found[1].number.kind, Softphone.NumberKind.Mobile);
    }

    function test_match() {
        const full = Numbers.parse("+39 06 1234567", "IT");
        compare(Numbers.match(full, Numbers.parse("06 1234567", "IT")), Softphone.NumberMatch.Exact);
        compare(Numbers.match(full, Numbers.parse("06 1234568", "IT")), Softphone.NumberMatch.None);
    }

    function test_emergencyService() {
        verify(Numbers.emergencyService("112").length > 0);
        compare(Numbers.emergencyService("06 1234567"), "");
    }
}
