import QtQml
import QtQml.Models
import QtTest
import Softphone
import SoftphoneTest

TestCase {
    id: root

    name: "Directory"

    readonly property string cards: `[
        {"id": 1, "firstName": "Mario", "lastName": "Rossi", "company": "Officina", "unit": "Sales",
         "contacts": [{"type": "work", "value": "06 1234567"}, {"type": "email", "value": "m@example.com"}]},
        {"id": 2, "firstName": "Luca", "lastName": "Bruni", "contacts": [{"type": "exten", "value": "201"}]}]`

    function init() {
        failOnWarning(/.?/);
    }

    Component {
        id: directories

        ContactDirectory {}
    }

    Component {
        id: views

        Instantiator {
            delegate: QtObject {
                required property int index
                required property contactCard card
                required property string name
                required property var nameHits
            }
        }
    }

    /// \a object with properties that no checker knows of.
    function plain(object) {
        return object;
    }

    /// The first delegate.
    function first(view) {
        return plain(view.objectAt(0));
    }

    function directory() : ContactDirectory {
        return createTemporaryObject(directories, root) as ContactDirectory;
    }

    function test_reportOfALoad() {
        const contacts = directory();
        const first = contacts.loadJson(cards);
        compare(first.added, 2);
        compare(first.updated, 0);
        compare(first.errors.length, 0);
        compare(contacts.total, 2);
        const second = contacts.loadJson('[{"id": 2, "lastName": "Brun"},\n oops]');
        compare(second.updated, 1);
        compare(second.errors.length, 1);
        compare(second.errors[0].line, 2);
        verify(second.errors[0].text.length > 0);
    }

    function test_loadOfAFileCallsBack() {
        const contacts = directory();
        let report = null;
        contacts.load(Qt.resolvedUrl("missing.json"), loaded => report = loaded);
        compare(report, null);
        tryVerify(() => report !== null);
        compare(report.added, 0);
        compare(report.errors.length, 1);

        report = null;
        contacts.load(Qt.resolvedUrl("../../examples/contacts/sales.json"), loaded => report = loaded);
        tryVerify(() => report !== null);
        compare(report.errors.length, 0);
        verify(report.added > 0);
        compare(contacts.total, report.added);
    }

    function test_loadsWithoutACallback() {
        const contacts = directory();
        contacts.load(Qt.resolvedUrl("../../examples/contacts/sales.json"));
        tryVerify(() => contacts.total > 0);
    }

    function test_callerIsACard() {
        const contacts = directory();
        contacts.loadJson(cards);
        const caller = contacts.caller("+39 06 1234567");
        compare(caller.displayName, "Mario Rossi");
        compare(caller.initials, "MR");
        compare(caller.company, "Officina");
        compare(caller.department, "Sales");
        compare(caller.numbers, ["06 1234567"]);
        compare(caller.emails, ["m@example.com"]);
        compare(caller.points.length, 2);
        compare(caller.points[0].type, ContactReferenceType.Type.Work);
        compare(caller.points[1].value, "m@example.com");
        compare(contacts.caller("06 7654321"), undefined);
    }

    function test_madeByTheProgram() {
        const contacts = Made.directory;
        compare(contacts.DirectoryFunctions.loadJson(cards).added, 2);
        compare(contacts.DirectoryFunctions.caller("201")?.displayName, "Luca Bruni");
        compare(plain(contacts).total, 2);
        compare(plain(Made.transfers.DirectoryFunctions)?.total, undefined);
    }

    function test_cardById() {
        const contacts = directory();
        contacts.loadJson(cards);
        contacts.filter = "rossi";
        compare(contacts.card("2").lastName, "Bruni");
        compare(contacts.card("3"), undefined);
        compare(contacts.row("2"), -1);
    }

    function test_cardsAreChanged() {
        const contacts = directory();
        contacts.loadJson(cards);
        const card = contacts.card("2");
        card.company = "Forno";
        verify(contacts.addOrUpdate(card));
        compare(contacts.card("2").company, "Forno");
        compare(contacts.total, 2);
        verify(contacts.removeCard("2"));
        compare(contacts.total, 1);
    }

    function test_regionIsThatOfCallers() {
        const contacts = directory();
        contacts.loadJson('{"id": 1, "lastName": "Smith", "contacts": [{"type": "work", "value": "020 7946 0020"}]}');
        compare(contacts.region, "IT");
        compare(contacts.caller("+44 20 7946 0020"), undefined);
        contacts.region = "GB";
        compare(contacts.caller("+44 20 7946 0020")?.lastName, "Smith");
    }

    function test_delegatesSeeCardsAndHits() {
        const contacts = directory();
        contacts.loadJson(cards);
        const view = createTemporaryObject(views, root, {model: contacts}) as Instantiator;
        compare(view.count, 2);
        compare(first(view).name, "Luca Bruni");
        contacts.filter = "ros";
        compare(contacts.count, 1);
        compare(view.count, 1);
        compare(first(view).card.displayName, "Mario Rossi");
        compare(first(view).nameHits.length, 1);
        compare(first(view).nameHits[0].position, 6);
        compare(first(view).nameHits[0].length, 3);
    }
}
