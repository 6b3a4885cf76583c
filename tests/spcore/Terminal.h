#pragma once

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QString>
#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

/// A terminal that a command is given as one of its standard streams; the test holds the other end.
class Terminal
{
public:
    Terminal()
        : m_screen(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        if (m_screen >= 0 && grantpt(m_screen) == 0 && unlockpt(m_screen) == 0) {
            // Held open, so that what a command has written outlives it.
            m_line = open(ptsname(m_screen), O_RDWR | O_NOCTTY | O_CLOEXEC);
        }
    }

    ~Terminal()
    {
        close(m_line);
        close(m_screen);
    }
    Terminal(Terminal const&) = delete;
    Terminal& operator=(Terminal const&) = delete;

    [[nodiscard]] bool isOpen() const { return m_line >= 0; }

    /// The file that stands for the terminal.
    [[nodiscard]] QString name() const { return QFile::decodeName(ptsname(m_screen)); }

    /// Lets whoever writes to the terminal wait, as Ctrl-S does, until resumeOutput().
    [[nodiscard]] bool pauseOutput() const { return tcflow(m_line, TCOOFF) == 0; }

    [[nodiscard]] bool resumeOutput() const { return tcflow(m_line, TCOON) == 0; }

    /// Gives \a text to whoever reads from the terminal, as if it were typed.
    [[nodiscard]] bool type(QByteArray const& text) const
    {
        return ::write(m_screen, text.constData(), static_cast<std::size_t>(text.size())) == text.size();
    }

    /// What was written and has not been read yet, the first 64 KiB of it; waits for the first byte.
    [[nodiscard]] QByteArray read() const
    {
        QByteArray bytes(0x10000, '\0');
        bytes.truncate(
            std::max<qsizetype>(::read(m_screen, bytes.data(), static_cast<std::size_t>(bytes.size())), 0));
        return bytes;
    }

    /// All that \a process writes to the terminal, read while it runs to its end.
    [[nodiscard]] QByteArray readAll(QProcess& process) const
    {
        QByteArray output;
        while (process.state() != QProcess::NotRunning || isReadable()) {
            if (isReadable()) {
                output += read();
            } else if (!process.waitForFinished(20) && process.error() == QProcess::FailedToStart) {
                break;
            }
        }
        return output;
    }

private:
    [[nodiscard]] bool isReadable() const
    {
        pollfd screen = {m_screen, POLLIN, 0};
        return poll(&screen, 1, 0) > 0 && (screen.revents & POLLIN) != 0;
    }

    int m_screen;
    int m_line = -1;
};
