#pragma once

#include <QGuiApplication>
#include <QObject>
#include <QPalette>
#include <QtQml/qqml.h>

/// The desktop's choice of light or dark, as tests of QML make it.
class Desktop : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE void setDark(bool dark)
    {
        QPalette palette;
        palette.setColor(QPalette::Window, dark ? Qt::black : Qt::white);
        palette.setColor(QPalette::WindowText, dark ? Qt::white : Qt::black);
        QGuiApplication::setPalette(palette);
    }
};
