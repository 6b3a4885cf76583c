#pragma once

#include "Watchdog.h"

#include <QAccessible>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QString>
#include <client/InstanceChannel.h>
#include <functional>

/// The desk in a window, and the hands of somebody who uses it: what is looked for is found by its kind and
/// its name, and waited for.
class Driver
{
public:
    /// Starts the desk as with the arguments \a given, and waits for its first frame.
    explicit Driver(QStringList const& given = {});

    [[nodiscard]] QQuickWindow* window() const { return m_window; }

    /// Waits until \a condition holds, at most ten seconds. Returns whether it does.
    bool wait(std::function<bool()> const& condition) const;

    /// Whether a part of the kind \a role whose name contains \a name appears.
    [[nodiscard]] bool sees(QAccessible::Role role, QString const& name) const;
    /// sees() of a text.
    [[nodiscard]] bool reads(QString const& text) const { return sees(QAccessible::StaticText, text); }

    /// Clicks in the middle of the part of the kind \a role whose name contains \a name. Returns whether
    /// there is one.
    bool click(QAccessible::Role role, QString const& name);
    /// click() of a button.
    bool press(QString const& name) { return click(QAccessible::Button, name); }

    void type(QString const& text) const;
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;
    void paste(QString const& text) const;
    void drop(QString const& text) const;

    /// What stands in the field whose name contains \a name.
    [[nodiscard]] QString field(QString const& name) const;

    /// Shows the page \a index, counted from 0.
    bool show(int index, QString const& title);

    /// Waits until two frames were drawn.
    bool rests() const;

    /// Writes what the window shows to the folder of pictures as \a name, where there is one.
    void photograph(QString const& name) const;

    /// The longest time for which the window did not answer, since the last call.
    [[nodiscard]] std::chrono::milliseconds longestWait() { return m_watchdog.takeLongest(); }

private:
    Softphone::InstanceChannel m_channel{QStringLiteral("cordaviva-desk")};
    QQmlApplicationEngine m_engine;
    QQuickWindow* m_window = nullptr;
    mutable Watchdog m_watchdog;
};
