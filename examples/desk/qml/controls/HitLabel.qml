import QtQuick
import Softphone
import Desk

/// A text with the places marked that a search has found; cut with an ellipsis where it has no room.
Text {
    id: label

    required property string plain
    property var hits: []
    /// The room that all of it takes.
    readonly property real wanted: Math.ceil(cut.advanceWidth) + 1

    color: Theme.colors.text
    font.family: Theme.fontFamily
    font.pixelSize: Sizes.body
    textFormat: hits.length > 0 ? Text.RichText : Text.PlainText
    text: hits.length > 0 ? Search.marked(cut.elidedText, hits, Theme.colors.searchHit) : plain
    elide: Text.ElideRight
    horizontalAlignment: Text.AlignLeft

    TextMetrics {
        id: cut

        text: label.plain
        font: label.font
        elide: Qt.ElideRight
        elideWidth: label.width
    }
}
