pragma Singleton
import QtQuick

/// The one scale of spaces and text sizes. Text follows the font of the desktop, spaces do not.
QtObject {
    id: sizes

    readonly property int tight: 4
    readonly property int gap: 8
    readonly property int margin: 16
    readonly property int wide: 24
    readonly property int radius: 8

    readonly property int body: Math.max(13, Math.round(metrics.height * 0.86))
    readonly property int small: Math.round(body * 0.87)
    readonly property int title: Math.round(body * 1.6)
    readonly property int icon: Math.round(body * 1.5)
    /// What a finger or a pointer hits without aim.
    readonly property int target: Math.max(36, Math.round(body * 2.6))

    readonly property FontMetrics metrics: FontMetrics {
        font: Application.font
    }
}
