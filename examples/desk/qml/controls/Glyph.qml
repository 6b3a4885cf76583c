import QtQuick
import QtQuick.Shapes
import Desk

/// A drawn sign of a line's width, in any colour.
Shape {
    id: glyph

    /// What it shows: a name in shapes, or nothing.
    required property string name
    property color color: "black"
    property int size: Sizes.icon
    /// Whether it points along the reading direction.
    property bool directed: false

    /// Whether it is drawn as it is; what changes while it is made is not drawn in between.
    property bool made: false

    readonly property var shapes: ({
        contacts: "M9 11 a3.5 3.5 0 1 0 0 -7 a3.5 3.5 0 1 0 0 7 M2.5 20 c0 -4 3 -6 6.5 -6 c3.5 0 6.5 2 6.5 6 M16 4.5 a3.5 3.5 0 0 1 0 6.2 M18 14.5 c2 .8 3.5 2.7 3.5 5.5",
        keypad: "M4 5 a1 1 0 1 0 2 0 a1 1 0 1 0 -2 0 M11 5 a1 1 0 1 0 2 0 a1 1 0 1 0 -2 0 M18 5 a1 1 0 1 0 2 0 a1 1 0 1 0 -2 0 M4 12 a1 1 0 1 0 2 0 a1 1 0 1 0 -2 0 M11 12 a1 1 0 1 0 2 0 a1 1 0 1 0 -2 0 M18 12 a1 1 0 1 0 2 0 a1 1 0 1 0 -2 0 M4 19 a1 1 0 1 0 2 0 a1 1 0 1 0 -2 0 M11 19 a1 1 0 1 0 2 0 a1 1 0 1 0 -2 0 M18 19 a1 1 0 1 0 2 0 a1 1 0 1 0 -2 0",
        clock: "M12 3 a9 9 0 1 0 0 18 a9 9 0 1 0 0 -18 M12 7 v5 l3.5 2.5",
        chat: "M4 5 h16 v11 h-9 l-4 4 v-4 h-3 z",
        download: "M12 4 v11 M7.5 11 l4.5 4.5 l4.5 -4.5 M4 20 h16",
        settings: "M4 7 h9 M17 7 h3 M15 4.5 v5 M4 17 h3 M11 17 h9 M9 14.5 v5",
        search: "M10.5 4 a6.5 6.5 0 1 0 0 13 a6.5 6.5 0 1 0 0 -13 M15.5 15.5 l5 5",
        phone: "M6 3 l3 1 l1.5 4 l-2 2 c1 2.5 3 4.5 5.5 5.5 l2 -2 l4 1.5 l1 3 c-.5 2 -2 3 -4 3 c-7 -.5 -13 -6.5 -14 -14 c0 -2 1 -3.5 3 -4 z",
        erase: "M9 6 h12 v12 h-12 l-6 -6 z M12.5 9.5 l5 5 M17.5 9.5 l-5 5",
        close: "M6 6 l12 12 M18 6 l-12 12",
        back: "M14 5 l-7 7 l7 7",
        pause: "M8 5 v14 M16 5 v14",
        play: "M7 4 l13 8 l-13 8 z",
        mail: "M3 6 h18 v12 h-18 z M3 7 l9 7 l9 -7",
        send: "M3 11 l18 -8 l-6 18 l-4 -7 z M11 14 l10 -11",
        retry: "M19 12 a7 7 0 1 1 -2 -5 l2 2 M19 4 v5 h-5",
        incoming: "M18 6 l-11 11 M7 9 v8 h8",
        outgoing: "M6 18 l11 -11 M9 7 h8 v8",
        missed: "M4 7 l8 8 l8 -8 M4 13 v-6 h6",
        warning: "M12 4 l9 16 h-18 z M12 10 v4 M12 17 v.4",
        done: "M4 12.5 l5.5 5.5 l10.5 -12",
        wave: "M4 10 v4 M8 6 v12 M12 9 v6 M16 4 v16 M20 10 v4",
        link: "M9 15 l6 -6 M10.5 7 l2 -2 a4.2 4.2 0 0 1 6 6 l-2 2 M13.5 17 l-2 2 a4.2 4.2 0 0 1 -6 -6 l2 -2"
    })

    implicitWidth: size
    implicitHeight: size
    Accessible.ignored: true
    // Drawn apart: smooth, and cut off where its place is.
    layer.enabled: made
    layer.samples: 4
    layer.smooth: true
    Component.onCompleted: made = true
    onNameChanged: if (made) drawAnew()
    onColorChanged: if (made) drawAnew()

    // A change of the path or its colour alone does not reach the layer everywhere.
    function drawAnew() {
        made = false;
        made = true;
    }

    ShapePath {
        strokeColor: glyph.color
        strokeWidth: Math.max(1.4, glyph.size / 13)
        fillColor: "transparent"
        capStyle: ShapePath.RoundCap
        joinStyle: ShapePath.RoundJoin
        scale: Qt.size(glyph.size / 24, glyph.size / 24)

        PathSvg {
            path: glyph.shapes[glyph.name] ?? ""
        }
    }

    transform: Scale {
        origin.x: glyph.width / 2
        xScale: glyph.directed && glyph.LayoutMirroring.enabled ? -1 : 1
    }
}
