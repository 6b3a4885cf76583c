#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <cstddef>
#include <vector>

/// A sink of JsonWalk that builds Qt's JSON values.
class JsonValues
{
public:
    /// As deep as Qt's own parser goes: its classes recurse when they are written, compared and destroyed.
    static constexpr std::size_t maxDepth = 1024;

    /// Adds to the object or array \a outermost.
    explicit JsonValues(QJsonValue const& outermost);

    void null() { add(QJsonValue()); }
    void boolean(bool truth) { add(truth); }
    void number(int number) { add(number); }
    void string(QString const& text) { add(text); }
    void name(QString const& text) { m_open.back().name = text; }
    void open(bool isArray);
    void close();

    /// What was built.
    QJsonValue value() const;

private:
    struct Container
    {
        bool isArray;
        QJsonObject object;
        QJsonArray array;
        QString name; ///< of the member to come
    };

    static QJsonValue valueOf(Container const& container);
    void add(QJsonValue const& value);

    std::vector<Container> m_open;
};
