#pragma once

#include <softphonecore_export.h>

#include <QString>

/// Facts about the operating system, answered for macOS, the system that the client ships on.
///
/// The answers are the same on every system that this library is built on, except for what is read from the
/// machine itself (its id, the version of its system). What only Windows would answer otherwise has a fixed
/// answer. Any thread.
class SOFTPHONECORE_EXPORT SystemInfo
{
public:
    /// A button of a window's caption.
    enum class SystemButtonType : int {
        None = 0,
        Menu = 1,
        Help = 2,
        Minimize = 3,
        Maximize = 4,
        Restore = 5,
        Close = 6,
    };

    SystemInfo() = delete;

    /// The id that the operating system gave this machine when it was installed; empty when it has none.
    [[nodiscard]] static QString getMachineUniqueId();

    /// The operating system's name, "MacOS".
    [[nodiscard]] static QString getOS();

    /// The version of the operating system as it names it itself, such as "13.4" or "12".
    [[nodiscard]] static QString getOSVersion();

    /// Always false.
    [[nodiscard]] static bool isWindows10OrNewer();

    /// Always true: no supported release of the operating system lacks anything that the client needs.
    [[nodiscard]] static bool isOSFullyCompatible();

    /// The font in which caption buttons are labelled, "Segoe UI".
    [[nodiscard]] static QString getSystemButtonFont();

    /// The glyph of \a type in the icon font "Segoe MDL2 Assets": one character for the four buttons from
    /// SystemButtonType::Minimize to SystemButtonType::Close, an empty string for every other value.
    [[nodiscard]] static QString getSystemButtonGlyph(SystemButtonType type);

    /// Whether the system shows the client's own notifications: Windows from version 10 on. False elsewhere.
    [[nodiscard]] static bool areNotificationsSupported();
};
