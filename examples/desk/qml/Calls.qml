import QtQuick

/// The past calls, the last one first: number, direction ("incoming", "outgoing", "missed"), when, and seconds, -1
/// where nobody answered.
ListModel {
    id: calls

    dynamicRoles: false

    Component.onCompleted: {
        const minute = 60000;
        const samples = [["+442079460002", "incoming", 12, 254], ["+447700900005", "missed", 47, -1],
            ["203", "outgoing", 95, 61], ["+442079460011", "outgoing", 190, 1830], ["+390612345678", "missed", 260, -1],
            ["+447700900012", "incoming", 1500, 33], ["245", "incoming", 1720, 702],
            ["+442079460023", "outgoing", 2900, -1], ["+393401234567", "incoming", 3100, 3725]];
        for (const [number, direction, ago, seconds] of samples) {
            append({number: number, direction: direction, when: new Date(Date.now() - ago * minute), seconds: seconds});
        }
    }
}
