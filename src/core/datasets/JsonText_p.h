#pragma once

#include <QByteArray>
#include <QStringView>
#include <cstddef>
#include <limits>

/// A sink of JsonWalk that writes compact JSON text, byte for byte as QJsonDocument does.
class JsonText
{
public:
    static constexpr std::size_t maxDepth = std::numeric_limits<std::size_t>::max();

    void null() { value("null"); }
    void boolean(bool truth) { value(truth ? "true" : "false"); }
    void number(int number) { value(QByteArray::number(number)); }
    void string(QStringView text);
    void name(QStringView text);
    void open(bool isArray);
    void close();

    QByteArray const& text() const { return m_text; }

private:
    void value(QByteArrayView written);
    void separate();
    void quote(QStringView text);

    QByteArray m_text;
    QByteArray m_closing; ///< the brackets to come, innermost last
};
