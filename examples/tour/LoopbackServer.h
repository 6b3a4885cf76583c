#pragma once

#include <QByteArray>
#include <QString>
#include <atomic>
#include <thread>

/// A web server on the loopback interface that answers every request with one document, so that the tour
/// needs no network. It runs on a thread of its own, since transfers block the caller's.
class LoopbackServer
{
public:
    explicit LoopbackServer(QByteArray document);
    ~LoopbackServer();
    LoopbackServer(LoopbackServer const&) = delete;
    LoopbackServer& operator=(LoopbackServer const&) = delete;

    /// Listens, on the same port as before when it was stopped; false when it cannot.
    bool start();

    /// Closes the port; transfers fail from here on.
    void stop();

    /// Where the document is.
    [[nodiscard]] QString url() const;

private:
    void serve();

    QByteArray m_document;
    std::atomic<quint16> m_port = 0;
    std::atomic<bool> m_running = false;
    std::atomic<bool> m_stopping = false;
    std::thread m_thread;
};
