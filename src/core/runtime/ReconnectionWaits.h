#pragma once

#include <softphonecore_export.h>

#include <QObject>
#include <chrono>

/// What a ReconnectionManager tells about its waits; it is used through that class.
///
/// The signal stands in a class of its own because callers know the manager's own signals and slots by their
/// numbers, and a further signal among them would move those of the slots.
class SOFTPHONECORE_EXPORT ReconnectionWaits : public QObject
{
    Q_OBJECT

public:
    ReconnectionWaits();
    ~ReconnectionWaits() override;

Q_SIGNALS:
    /// A wait of \a length has begun; one that was under way ends without a signal of its own.
    void waitStarted(std::chrono::milliseconds length) const;
};
