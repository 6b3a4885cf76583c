#pragma once

#include <client/ContactDirectory.h>
#include <client/Transfers.h>

#include <QObject>
#include <QtQml/qqml.h>

/// Objects that a program has made in C++.
class Made : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QObject* directory READ directory CONSTANT)
    Q_PROPERTY(QObject* transfers READ transfers CONSTANT)

public:
    using QObject::QObject;

    [[nodiscard]] QObject* directory() { return &m_directory; }
    [[nodiscard]] QObject* transfers() { return &m_transfers; }

private:
    Softphone::ContactDirectory m_directory;
    Softphone::Transfers m_transfers;
};
