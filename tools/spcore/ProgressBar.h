#pragma once

#include <QElapsedTimer>
#include <QString>

/// Shows how far an operation has come, on standard error and only where that is a terminal: one line with
/// bytes, rate and time left, as much of it as the terminal is wide.
class ProgressBar
{
public:
    explicit ProgressBar(QString label);
    ~ProgressBar();
    ProgressBar(ProgressBar const&) = delete;
    ProgressBar& operator=(ProgressBar const&) = delete;

    /// \a now of \a total bytes are done; \a total 0 or less: nobody knows of how many. Draws ten times a
    /// second at most, and the end in any case.
    void update(long long now, long long total);

    /// The line for \a now of \a total bytes after \a milliseconds, \a width characters long at most.
    [[nodiscard]] static QString line(QString const& label, long long now, long long total,
                                      long long milliseconds, int width);

private:
    QString m_label;
    QElapsedTimer m_sinceStart;
    long long m_drawnAt = -1; ///< milliseconds after the start; -1: not yet
    bool m_isVisible;
};
