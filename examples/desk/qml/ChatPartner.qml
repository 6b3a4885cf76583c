import QtQuick

/// Somebody who writes, and answers what is written to them with the next of their messages.
ListModel {
    id: messages

    property bool typing: false
    property int next: 4
    readonly property string name: "Giulia Gallo"
    readonly property int samples: 9

    readonly property Timer pace: Timer {
        interval: 900
        onTriggered: messages.answer()
    }

    function write(text: string) {
        append({text: text, sample: "", mine: true, when: new Date()});
        typing = true;
        pace.restart();
    }

    function answer() {
        typing = false;
        append({text: "", sample: "chat.sample" + next, mine: false, when: new Date()});
        next = next % samples + 1;
    }

    Component.onCompleted: {
        for (let sample = 1; sample < next; ++sample) {
            const when = new Date(Date.now() - (next - sample) * 240000);
            append({text: "", sample: "chat.sample" + sample, mine: sample === 2, when: when});
        }
    }
}
