import QtQuick
import Softphone
import Desk

/// Formats the number while it is typed, with the cursor behind the digit where it was; pasted text gives the
/// number that is in it.
Field {
    id: field

    placeholderText: Strings.texts["dial.field"]
    text: Desk.number
    inputMethodHints: Qt.ImhDialableCharactersOnly
    font.pixelSize: Math.round(Sizes.body * 1.4)

    onTextEdited: {
        if (text.length > Desk.number.length + 1) {
            Desk.enter(text);
            return;
        }
        const formatted = Numbers.formatAsTyped(text, Desk.region);
        const place = Numbers.cursorInFormatted(text, cursorPosition, formatted);
        Desk.number = formatted;
        text = Qt.binding(() => Desk.number);
        cursorPosition = place;
    }

    Action {
        anchors { right: parent.right; verticalCenter: parent.verticalCenter; margins: Sizes.tight }
        implicitHeight: parent.height - 2 * Sizes.tight
        display: Action.IconOnly
        bare: true
        glyph: "erase"
        directed: true
        text: Strings.texts["dial.erase"]
        enabled: Desk.number !== ""
        onClicked: Desk.number = Numbers.formatAsTyped(Desk.number.slice(0, -1), Desk.region)
    }
    rightPadding: mirrored ? Sizes.margin : Sizes.target + Sizes.gap
    leftPadding: mirrored ? Sizes.target + Sizes.gap : Sizes.margin
}
