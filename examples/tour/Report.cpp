#include "Report.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>

namespace {

void print(QString const& line)
{
    std::puts(line.toUtf8().constData());
    std::fflush(stdout);
}

} // namespace

void Report::step(QString const& title)
{
    m_steps.append(QJsonObject{{QStringLiteral("step"), title}, {QStringLiteral("calls"), QJsonArray()}});
    if (m_live) {
        print(QStringLiteral("\n%1. %2").arg(QString::number(m_steps.size()), title));
    }
}

void Report::call(QString const& call, QString const& result)
{
    QJsonObject step = m_steps.last().toObject();
    QJsonArray calls = step.value(QStringLiteral("calls")).toArray();
    calls.append(QJsonObject{{QStringLiteral("call"), call}, {QStringLiteral("result"), result}});
    step.insert(QStringLiteral("calls"), calls);
    m_steps.replace(m_steps.size() - 1, step);
    if (m_live) {
        print(QStringLiteral("   ") + call.leftJustified(44) + QStringLiteral("  ") + result);
    }
}

void Report::call(QString const& call, bool result)
{
    this->call(call, result ? QStringLiteral("true") : QStringLiteral("false"));
}

void Report::call(QString const& call, qint64 result)
{
    this->call(call, QString::number(result));
}

void Report::require(QString const& call, bool result)
{
    this->call(call, result);
    m_succeeded = m_succeeded && result;
}

QByteArray Report::toJson() const
{
    return QJsonDocument(m_steps).toJson(QJsonDocument::Indented);
}
