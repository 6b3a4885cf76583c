#pragma once

#include <QObject>
#include <QWindow>
#include <QtQml/qqml.h>

/// Brings a window to the front.
class Front : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// Shows \a window before all others, with the right to it that the desktop gave as \a token.
    Q_INVOKABLE void bring(QWindow* window, QByteArray const& token) const
    {
        qputenv("XDG_ACTIVATION_TOKEN", token);
        window->show();
        window->raise();
        window->requestActivate();
    }
};
