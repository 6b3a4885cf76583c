#include "Watchdog.h"

#include <QMetaObject>
#include <algorithm>
#include <fstream>
#include <string>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

/// How long the thread of \a file was ready and had no processor.
std::chrono::nanoseconds queued(std::string const& file)
{
    std::ifstream stream(file);
    long long ran = 0;
    long long waited = 0;
    stream >> ran >> waited;
    return std::chrono::nanoseconds(waited);
}

} // namespace

Watchdog::Watchdog()
    : m_schedule("/proc/self/task/" + std::to_string(gettid()) + "/schedstat")
    , m_thread([this] { knock(); })
{
}

Watchdog::~Watchdog()
{
    m_isEnding = true;
    m_thread.join();
}

std::chrono::milliseconds Watchdog::takeLongest()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(m_longest.exchange({}));
}

void Watchdog::knock()
{
    while (!m_isEnding) {
        std::this_thread::sleep_for(3ms);
        if (!m_isAnswered.exchange(false)) {
            continue;
        }
        auto const start = std::chrono::steady_clock::now();
        auto const queuedBefore = queued(m_schedule);
        QMetaObject::invokeMethod(
            &m_watched,
            [this, start, queuedBefore, looks = m_looks.load()] {
                auto const own =
                    std::chrono::steady_clock::now() - start - (queued(m_schedule) - queuedBefore);
                if (looks == m_looks) {
                    m_longest = std::max<std::chrono::nanoseconds>(m_longest.load(), own);
                }
                m_isAnswered = true;
            },
            Qt::QueuedConnection);
    }
}
