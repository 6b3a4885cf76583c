#pragma once

#include <QObject>
#include <QVariantMap>
#include <QtQml/qqml.h>

/// The user's choices, in a scrambled file of the application's data folder.
class Settings : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// How long the file is; 0 when there is none.
    Q_PROPERTY(int bytes READ bytes NOTIFY changed)
    /// Whether the file holds what the last keep() wrote, or was read without damage.
    Q_PROPERTY(bool whole READ isWhole NOTIFY changed)

public:
    /// Reads the file.
    explicit Settings(QObject* parent = nullptr);

    [[nodiscard]] int bytes() const { return m_bytes; }
    [[nodiscard]] bool isWhole() const { return m_whole; }

    /// What was chosen for \a name; \a fallback when nothing was.
    [[nodiscard]] Q_INVOKABLE QVariant value(QString const& name, QVariant const& fallback) const
    {
        return m_values.value(name, fallback);
    }
    /// Writes the choice \a value for \a name with all others, and reads them back.
    Q_INVOKABLE void keep(QString const& name, QVariant const& value);
    /// Takes the choices from the file.
    Q_INVOKABLE void read();

Q_SIGNALS:
    void changed();

private:
    QVariantMap m_values;
    int m_bytes = 0;
    bool m_whole = false;
};
