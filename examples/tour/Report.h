#pragma once

#include <QJsonArray>
#include <QString>

/// What the tour did: steps, and in each the calls that were made and what came back.
class Report
{
public:
    /// With \a live everything is printed as it happens.
    explicit Report(bool live)
        : m_live(live)
    {
    }

    /// Opens the next step.
    void step(QString const& title);

    /// Notes one call of the current step, and its \a result as a person would read it.
    void call(QString const& call, QString const& result);
    void call(QString const& call, bool result);
    void call(QString const& call, qint64 result);

    /// Notes a call that had to give \a result for the tour to make sense; a false one makes it fail.
    void require(QString const& call, bool result);

    /// Whether every required call gave true.
    [[nodiscard]] bool succeeded() const { return m_succeeded; }

    /// The steps as an array of objects, each with its calls and their results.
    [[nodiscard]] QByteArray toJson() const;

private:
    bool m_live;
    bool m_succeeded = true;
    QJsonArray m_steps;
};
