pragma Singleton
import QtQuick
import Softphone
import Desk

/// What the pages share. Made when the first page is.
QtObject {
    id: desk

    property string region: Settings.value("region", "IT")
    /// What stands in the field of the dialling page.
    property string number: ""
    property bool loaded: false

    readonly property ContactDirectory directory: ContactDirectory {
        region: desk.region
    }
    readonly property PretendedLine line: PretendedLine {
        onEnded: call => desk.calls.insert(0, call)
    }
    readonly property Calls calls: Calls {}
    readonly property ChatPartner partner: ChatPartner {}
    readonly property GeneratedCards generated: GeneratedCards {
        onWritten: file =>  desk.directory.load(file, desk.loadKept)
    }
    readonly property list<string> kept: ["accounts", "partners", "reception", "sales", "support", "warehouse", "workshop"]

    signal pageWanted(string page)

    Component.onCompleted: generated.write()

    // The many first: an empty directory takes them over as they are.
    function loadKept() {
        let left = kept.length;
        for (const name of kept) {
            directory.load(Qt.resolvedUrl("../contacts/" + name + ".json"), () => {
                left -= 1;
                loaded = left === 0;
            });
        }
    }

    function nameOf(number: string) : string {
        return directory.caller(number)?.displayName ?? Numbers.parse(number, region)?.international ?? number;
    }

    /// Puts \a text, typed or pasted or dropped, into the field of the dialling page and shows that.
    function enter(text: string) {
        const found = Numbers.find(text, region);
        number = Numbers.formatAsTyped(found.length > 0 ? found[0].number.e164 : Numbers.dialString(text, region), region);
        pageWanted("dial");
    }

    function call(text: string) {
        enter(text);
        line.dial(Numbers.dialString(number, region));
    }
}
