#pragma once

#include "DataSets_p.h"

#include <QByteArrayView>
#include <QString>
#include <array>
#include <optional>
#include <vector>

/// Reads the JSON that programs write, straight into a record.
///
/// It knows objects, arrays, strings, numbers, true, false and null in their plain forms, and gives up on
/// all else: faults, repeated names, unusual numbers and escapes, deep nesting. What it gives up on is left
/// to Qt's parser, so that it need agree with that one on the texts that it takes, and on no others. May
/// throw std::bad_alloc.
class JsonFastReader
{
public:
    explicit JsonFastReader(QByteArrayView json);

    /// Reads the object that the text consists of into \a target, an empty object record. False when it
    /// gives up; the record is of no use then.
    bool read(DataSets::Impl::DataSetImpl& target);

private:
    struct Level
    {
        DataSets::Impl::DataSetImpl* record;
        int nextIndex = 0;
    };

    struct KnownName
    {
        QByteArrayView written;
        QString text;
    };

    bool skip(char expected);
    bool skipWord(QByteArrayView word);
    void skipSpace();
    bool readMember();
    bool readElement();
    bool readValue(DataSets::Impl::Key key);
    bool open(DataSets::Impl::Key key, bool isArray);
    bool closeFinished();
    std::optional<QByteArrayView> readPlain();
    std::optional<QString> readName();
    std::optional<QString> readString();
    std::optional<QString> readEscapedString(QByteArrayView start);
    std::optional<QChar> readEscape();
    std::optional<QChar> readUnit();
    std::optional<int> readNumber();
    template <typename T>
    bool store(DataSets::Impl::Key key, std::optional<T> const& value);

    char const* m_next;
    char const* m_end;
    std::vector<Level> m_open;         ///< the records around the next value
    std::array<KnownName, 64> m_names; ///< the entries of a list are mostly named alike
};
