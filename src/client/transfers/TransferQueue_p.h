#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>

namespace Softphone {

class TransferRun;

/// Whose turn it is. No more than six requests go to one server at a time: Qt keeps further ones in a queue
/// of its own, where no clock could tell waiting from silence.
class TransferQueue : public QObject
{
    Q_OBJECT

public:
    enum class Place { Back, Front };

    /// How many requests run at once; 1 at least.
    void setParallel(int count);

    /// \a run wants a turn; it is told by its proceed(), from the event loop.
    void enter(TransferRun* run, Place place = Place::Back);

    /// \a run gives its turn or its place back; nothing happens when it has none.
    void leave(TransferRun* run);

private:
    void giveTurnsLater();
    void giveTurns();
    [[nodiscard]] bool mayRun(QByteArray const& origin) const;

    QList<TransferRun*> m_waiting;
    QHash<TransferRun*, QByteArray> m_running; ///< and the server that each asks
    QHash<QByteArray, int> m_requests;         ///< to each server
    int m_parallel = 6;
    bool m_isDue = false;
};

} // namespace Softphone
