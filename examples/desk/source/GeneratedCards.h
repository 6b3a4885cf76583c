#pragma once

#include <QObject>
#include <QTemporaryDir>
#include <QUrl>
#include <QtQml/qqml.h>

/// A large directory of invented people, written as a PBX would send it.
class GeneratedCards : public QObject
{
    Q_OBJECT
    QML_ELEMENT

public:
    using QObject::QObject;

    /// Writes about 100,000 cards to a temporary file on another thread; written() follows.
    Q_INVOKABLE void write();

Q_SIGNALS:
    /// The cards are in \a file, for as long as this object lives.
    void written(QUrl const& file);

private:
    QTemporaryDir m_folder;
};
