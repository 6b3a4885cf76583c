#pragma once

#include <QObject>
#include <QTemporaryDir>
#include <QtQml/qqml.h>

/// A recording whose recorder was killed before it could write how long it is.
class Recording : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    /// How long the recording is, as its header tells; 0 while that is not known.
    Q_PROPERTY(int seconds READ seconds NOTIFY changed)

public:
    explicit Recording(QObject* parent = nullptr);

    [[nodiscard]] int seconds() const;

    Q_INVOKABLE void repair();

Q_SIGNALS:
    void changed();

private:
    [[nodiscard]] QString path() const;

    QTemporaryDir m_folder;
};
