#pragma once

#include <QElapsedTimer>
#include <QtGlobal>
#include <cmath>

namespace Softphone {

/// How fast bytes come, smoothed over the last second or so: a time left that jumps is of no use.
class TransferPace
{
public:
    void start(qint64 done)
    {
        m_done = done;
        m_rate = 0;
        m_sinceUpdate.start();
    }

    void update(qint64 done)
    {
        double const seconds = static_cast<double>(m_sinceUpdate.restart()) / 1000.0;
        if (seconds <= 0) {
            return;
        }
        double const current = static_cast<double>(done - m_done) / seconds;
        m_rate = m_rate <= 0 ? current : current + (m_rate - current) * std::exp(-seconds);
        m_done = done;
    }

    [[nodiscard]] double bytesPerSecond() const { return m_rate; }

private:
    qint64 m_done = 0;
    double m_rate = 0;
    QElapsedTimer m_sinceUpdate;
};

} // namespace Softphone
