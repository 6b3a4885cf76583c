#pragma once

#include <client/CallClock.h>

#include <QObject>
#include <QString>
#include <QtQml/qqml.h>
#include <chrono>

namespace SoftphoneQml {

/// `Duration`: how long something lasts or lasted, as text.
class DurationFunctions : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Duration)
    QML_SINGLETON

public:
    /// For the engine, which makes one.
    using QObject::QObject;

    /// \a seconds as CallClock's `text` shows the length of a call: "00:07", "1:02:03".
    [[nodiscard]] Q_INVOKABLE QString text(int seconds) const
    {
        return Softphone::callLengthText(std::chrono::seconds(seconds));
    }
};

} // namespace SoftphoneQml
