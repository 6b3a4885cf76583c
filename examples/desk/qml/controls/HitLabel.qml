import QtQuick
import QtQuick.Controls.Basic
import Softphone

/// A text with the places marked that a search has found; cut with an ellipsis where it has no room.
Label {
    id: label

    required property string plain
    property var hits: []

    textFormat: hits.length > 0 ? Text.RichText : Text.PlainText
    text: hits.length > 0 ? Search.marked(cut.elidedText, hits, Theme.colors.searchHit) : plain
    elide: Text.ElideRight

    TextMetrics {
        id: cut

        text: label.hits.length > 0 ? label.plain : ""
        font: label.font
        elide: Qt.ElideRight
        elideWidth: label.width
    }
}
