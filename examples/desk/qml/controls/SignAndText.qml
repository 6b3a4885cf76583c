import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Desk

/// What a button shows, in its middle: a sign, a text, or both.
Item {
    id: content

    property string glyph: ""
    property bool directed: false
    property int glyphRotation: 0
    property alias text: label.text
    property color ink: "black"
    property bool bold: false

    implicitWidth: row.implicitWidth
    implicitHeight: row.implicitHeight

    RowLayout {
        id: row

        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width)
        spacing: Sizes.gap

        Glyph {
            visible: content.glyph !== ""
            name: content.glyph
            directed: content.directed
            rotation: content.glyphRotation
            size: Math.round(Sizes.icon * 0.9)
            color: content.ink
        }

        Label {
            id: label

            Layout.fillWidth: true
            visible: text !== ""
            color: content.ink
            elide: Text.ElideRight
            font.bold: content.bold
            Accessible.ignored: true
        }
    }
}
