#pragma once

#include "MultiType.h"

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <softphonecore_export.h>
#include <type_traits>
#include <utility>
#include <variant>

class QDebug;

/// Keyed records: an object maps texts to values, an array maps 32-bit indices to them.
///
/// DataSet, DataObject and DataIterator are handles that share a record; the functions in DataSets::Impl
/// work on the record itself. All keys are given and handed back as text. In an array record the text is
/// read as QString::toInt() reads it ("3", "03", "+3" and " 3" are all index 3); text that is no 32-bit
/// integer names no entry. Entries are sorted by key: text by UTF-16 code unit, indices as numbers.
///
/// A record may be read by several threads at once, and belongs to one thread while it is changed.
/// Everything here that looks a key up takes logarithmic time, and nothing copies a nested record.
///
/// \code
/// DataSets::DataSet contact = DataSets::DataSet::createObject();
/// contact.setValue(QStringLiteral("name"), QStringLiteral("Rossi"));
/// contact.setValue(QStringLiteral("line"), 101);
/// int const line = contact.value<int>(QStringLiteral("line")).value_or(0);
/// for (DataSets::DataObject const& entry : contact) {
///     // entry.key is "line", then "name"
/// }
/// \endcode
namespace DataSets {

class DataObject;
class EntryWalk;

/// The record that the handles share, and the operations on it.
///
/// A record given as a pointer may be null and reads as an empty one.
namespace Impl {

/// A key as stored: the text of an object record, or the index of an array record.
using Key = std::variant<QString, int>;

/// Orders keys: texts before indices, texts by UTF-16 code unit, indices as numbers.
///
/// It is transparent: an entry is found by a text, a QStringView or an index as well as by a Key.
struct KeyOrder
{
    /// Marks the order as one that compares more than keys.
    using is_transparent = void;

    /// Whether \a left comes before \a right.
    template <typename Left, typename Right>
    bool operator()(Left const& left, Right const& right) const
    {
        return isBefore(comparable(left), comparable(right));
    }

private:
    // The text or the index that a key stands for, without a copy of the text.
    struct Name
    {
        Name(QStringView name)
            : text(name)
        {
        }
        Name(QString const& name)
            : text(name)
        {
        }
        Name(int name)
            : index(name)
            , isIndex(true)
        {
        }
        Name(Key const& key)
        {
            if (QString const* const name = std::get_if<QString>(&key)) {
                text = *name;
            } else {
                index = *std::get_if<int>(&key);
                isIndex = true;
            }
        }

        QStringView text;
        int index = 0;
        bool isIndex = false;
    };

    static bool isBefore(Name const& left, Name const& right)
    {
        if (left.isIndex != right.isIndex) {
            return right.isIndex;
        }
        return left.isIndex ? left.index < right.index : left.text < right.text;
    }

    // What else a key can be made of, a Latin-1 literal for one, is compared as a key.
    template <typename T>
    static auto comparable(T const& name)
    {
        if constexpr (std::is_convertible_v<T const&, Name>) {
            return Name(name);
        } else {
            return Key(name);
        }
    }
};

/// The entries of a record, sorted by key.
using Entries = std::map<Key, MultiType, KeyOrder>;

/// A record. createDS() makes one.
struct SOFTPHONECORE_EXPORT DataSetImpl
{
    /// Makes an empty record, an array when \a array is true.
    explicit DataSetImpl(bool array = false);
    /// Releases the entries. Records may be nested to any depth.
    ~DataSetImpl();
    DataSetImpl(DataSetImpl const&) = delete;
    DataSetImpl& operator=(DataSetImpl const&) = delete;

    /// The entries, sorted by key, to read and to change.
    ///
    /// While a DataIterator or a range-based for walks over the record, remove entries with the functions
    /// below (extractValueImpl() and the like). A walk keeps an iterator into this map, and does not see what
    /// is removed from the map itself. Adding and overwriting entries disturbs no walk.
    Entries entries;
    /// Whether the record is an array.
    bool isArray;
    /// Tells a walk whether its iterator still holds: a number that no other record has, and that is replaced
    /// by a higher one whenever a function below removes entries.
    unsigned long long generation;
};

/// A new, empty record: an array when \a isArray is true, else an object.
[[nodiscard]] SOFTPHONECORE_EXPORT std::shared_ptr<DataSetImpl> createDS(bool isArray);

/// Whether two records are of one kind and have equal keys and values; nested records are compared the same
/// way, to any depth. Records that contain themselves are equal when following them never meets a difference.
///
/// \param first   a record, or null
/// \param second  a record, or null
/// \return the result; a null record equals every record without entries, of either kind
///
/// Every pair of records that stand at the same place is compared once: n log n in the entries, and where
/// records contain themselves at most every record of one with every record of the other.
[[nodiscard]] SOFTPHONECORE_EXPORT bool compare(DataSetImpl const* first, DataSetImpl const* second);

/// The value under \a key in \a record, or null when \a key names no entry. The pointer is good until the
/// entry is removed.
[[nodiscard]] SOFTPHONECORE_EXPORT MultiType const* getValueImpl(DataSetImpl const* record,
                                                                 QString const& key);

/// Steps \a key to the next entry of \a record and returns that entry's value.
///
/// An empty \a key stands before the first entry. A record with an entry under the empty key can therefore
/// not be walked with this function alone; a DataIterator does it.
///
/// \return null, with \a key as it was, at the end and when \a key names no entry
SOFTPHONECORE_EXPORT MultiType const* getNextValueImpl(DataSetImpl const* record, QString& key);

/// Stores \a value under \a key of \a record, in place of what was there. Does nothing in an array record
/// when \a key is no index.
SOFTPHONECORE_EXPORT void setValueImpl(DataSetImpl& record, QString const& key, MultiType const& value);

/// Removes the entry \a key from \a record and returns its value; a value that holds nothing when there is
/// no such entry.
SOFTPHONECORE_EXPORT MultiType extractValueImpl(DataSetImpl& record, QString const& key);

/// Removes the entry under the text \a key from \a record.
///
/// \return the reverse of what one would expect, and callers rely on it: false when an entry was removed,
///         true when nothing was. The key is always taken as text, so nothing is ever removed from an array
///         record; extractValueImpl() does that.
SOFTPHONECORE_EXPORT bool deleteValueImpl(DataSetImpl& record, QString const& key);

/// The same as deleteValueImpl() for \a record and \a key.
SOFTPHONECORE_EXPORT bool deleteDataValue(DataSetImpl& record, QString const& key);

/// Removes every entry of \a record; its kind stays.
SOFTPHONECORE_EXPORT void clearImpl(DataSetImpl& record);

/// The same as clearImpl() for \a record.
SOFTPHONECORE_EXPORT void clearDataObjects(DataSetImpl& record);

/// The MultiType::Type of the entry \a key of \a record; 0 when there is no such entry.
[[nodiscard]] SOFTPHONECORE_EXPORT int getDataType(DataSetImpl const* record, QString const& key);

/// The number of entries of \a record.
[[nodiscard]] SOFTPHONECORE_EXPORT int getDataCount(DataSetImpl const* record);

/// Whether \a record takes \a key: an object record every text, an array record only a 32-bit integer.
[[nodiscard]] SOFTPHONECORE_EXPORT bool isValidKey(DataSetImpl const& record, QString const& key);

/// Copies the entry \a key of \a source, of any kind, into \a target in place of what was there. A nested
/// record is shared. Does nothing when a record is null, when one is an array and the other is not, or when
/// \a key names no entry.
SOFTPHONECORE_EXPORT void copyDataValueImpl(DataSetImpl* target, QString const& key,
                                            DataSetImpl const* source);

/// The same as copyDataValueImpl() for \a target, \a key and \a source.
SOFTPHONECORE_EXPORT void copyDataValue(DataSetImpl* target, QString const& key, DataSetImpl const* source);

/// Copies the entry \a key of \a record into \a target when the entry is of exactly that kind; a nested
/// record is shared.
///
/// \return false, with \a target as it was, when the entry is missing or of another kind
SOFTPHONECORE_EXPORT bool getDataValue(DataSetImpl const* record, QString const& key,
                                       std::shared_ptr<DataSetImpl>& target);
/// \overload
SOFTPHONECORE_EXPORT bool getDataValue(DataSetImpl const* record, QString const& key, bool& target);
/// \overload
SOFTPHONECORE_EXPORT bool getDataValue(DataSetImpl const* record, QString const& key, unsigned int& target);
/// \overload
SOFTPHONECORE_EXPORT bool getDataValue(DataSetImpl const* record, QString const& key, int& target);
/// \overload
SOFTPHONECORE_EXPORT bool getDataValue(DataSetImpl const* record, QString const& key, long long& target);
/// \overload
SOFTPHONECORE_EXPORT bool getDataValue(DataSetImpl const* record, QString const& key, QString& target);
/// \overload
SOFTPHONECORE_EXPORT bool getDataValue(DataSetImpl const* record, QString const& key, QByteArray& target);

/// Removes the entry \a key from \a record, whatever its kind, and moves its datum into \a target when it is
/// of exactly that kind.
///
/// \return false, with \a target as it was, when the entry was missing or of another kind. In the latter
///         case the entry is lost.
SOFTPHONECORE_EXPORT bool moveDataValue(DataSetImpl& record, QString const& key,
                                        std::shared_ptr<DataSetImpl>& target);
/// \overload
SOFTPHONECORE_EXPORT bool moveDataValue(DataSetImpl& record, QString const& key, bool& target);
/// \overload
SOFTPHONECORE_EXPORT bool moveDataValue(DataSetImpl& record, QString const& key, unsigned int& target);
/// \overload
SOFTPHONECORE_EXPORT bool moveDataValue(DataSetImpl& record, QString const& key, int& target);
/// \overload
SOFTPHONECORE_EXPORT bool moveDataValue(DataSetImpl& record, QString const& key, long long& target);
/// \overload
SOFTPHONECORE_EXPORT bool moveDataValue(DataSetImpl& record, QString const& key, QString& target);
/// \overload
SOFTPHONECORE_EXPORT bool moveDataValue(DataSetImpl& record, QString const& key, QByteArray& target);

/// Stores \a value under \a key of \a record, as setValueImpl() does; a nested record is shared, and a char
/// const* is read as UTF-8 text.
SOFTPHONECORE_EXPORT void setDataValue(DataSetImpl& record, QString const& key,
                                       std::shared_ptr<DataSetImpl> const& value);
/// \overload
SOFTPHONECORE_EXPORT void setDataValue(DataSetImpl& record, QString const& key, bool value);
/// \overload
SOFTPHONECORE_EXPORT void setDataValue(DataSetImpl& record, QString const& key, unsigned int value);
/// \overload
SOFTPHONECORE_EXPORT void setDataValue(DataSetImpl& record, QString const& key, int value);
/// \overload
SOFTPHONECORE_EXPORT void setDataValue(DataSetImpl& record, QString const& key, long long value);
/// \overload
SOFTPHONECORE_EXPORT void setDataValue(DataSetImpl& record, QString const& key, QString const& value);
/// \overload
SOFTPHONECORE_EXPORT void setDataValue(DataSetImpl& record, QString const& key, QByteArray const& value);
/// \overload
SOFTPHONECORE_EXPORT void setDataValue(DataSetImpl& record, QString const& key, char const* value);
/// Pointers to anything but char would silently become a Bool.
template <typename T>
void setDataValue(DataSetImpl& record, QString const& key, T const* value) = delete;

/// Stores a copy of \a value under \a key of \a record; the same as setDataValue().
SOFTPHONECORE_EXPORT void emplaceDataValue(DataSetImpl& record, QString const& key,
                                           std::shared_ptr<DataSetImpl>& value);
/// \overload
SOFTPHONECORE_EXPORT void emplaceDataValue(DataSetImpl& record, QString const& key, bool& value);
/// \overload
SOFTPHONECORE_EXPORT void emplaceDataValue(DataSetImpl& record, QString const& key, unsigned int& value);
/// \overload
SOFTPHONECORE_EXPORT void emplaceDataValue(DataSetImpl& record, QString const& key, int& value);
/// \overload
SOFTPHONECORE_EXPORT void emplaceDataValue(DataSetImpl& record, QString const& key, long long& value);
/// \overload
SOFTPHONECORE_EXPORT void emplaceDataValue(DataSetImpl& record, QString const& key, QString& value);
/// \overload
SOFTPHONECORE_EXPORT void emplaceDataValue(DataSetImpl& record, QString const& key, QByteArray& value);

} // namespace Impl

/// A handle that shares a record, or holds none (a null handle).
///
/// A null handle reads as an empty object record; storing into it does nothing.
class SOFTPHONECORE_EXPORT DataSet
{
public:
    /// Makes a null handle.
    DataSet();
    /// Makes a handle to \a record, which may be null.
    explicit DataSet(std::shared_ptr<Impl::DataSetImpl> record);

    /// A handle to a new, empty object record.
    [[nodiscard]] static DataSet createObject();
    /// A handle to a new, empty array record.
    [[nodiscard]] static DataSet createArray();

    /// Whether there is no record, or one without entries.
    [[nodiscard]] bool isEmpty() const;
    /// Whether there is a record and it is an array.
    [[nodiscard]] bool isArray() const;
    /// Whether \a key names an entry.
    [[nodiscard]] bool contains(QString const& key) const;
    /// The number of entries.
    [[nodiscard]] int count() const;
    /// The MultiType::Type of the entry \a key; 0 when there is no such entry.
    [[nodiscard]] int type(QString const& key) const;

    /// Copies the entry \a key into \a target when it is of exactly that kind: bool, unsigned int, int, long
    /// long, QString, QByteArray or a shared pointer to a record.
    ///
    /// \return false, with \a target as it was, when the entry is missing or of another kind
    template <typename T>
    bool getValue(QString const& key, T& target) const
    {
        return Impl::getDataValue(data.get(), key, target);
    }

    /// The entry \a key, empty when it is missing or not of kind \a T.
    template <typename T>
    [[nodiscard]] std::optional<T> value(QString const& key) const
    {
        T found{};
        return getValue(key, found) ? std::optional<T>(std::move(found)) : std::nullopt;
    }

    /// Stores \a value under \a key, in place of what was there; UTF-8 text may be given as char const*.
    template <typename T>
    void setValue(QString const& key, T value)
    {
        if (data) {
            Impl::setDataValue(*data, key, value);
        }
    }

    /// Removes the entry \a key, whatever its kind, and moves its datum into \a target when the kinds match.
    ///
    /// \return false, with \a target as it was, when the entry was missing or of another kind; in the latter
    ///         case it is lost
    template <typename T>
    bool moveValue(QString const& key, T& target)
    {
        return data && Impl::moveDataValue(*data, key, target);
    }

    /// Removes the entry \a key of an object record; false when it was removed and true when nothing was, as
    /// Impl::deleteDataValue() answers.
    bool deleteValue(QString const& key);
    /// Removes every entry.
    void clear();

    /// Copies the entries of \a other into this record as setData() does, so that those of kind ByteArray and
    /// Int64 are skipped. Entries under other keys stay.
    void copyDataSet(DataSet const& other);

    /// Copies the entry that \a object refers to into this record under the same key; a nested record is
    /// shared.
    ///
    /// \return false when this handle is null, the entry is missing, or it is of kind None, ByteArray or
    ///         Int64, which this operation does not copy. True otherwise, also when this is an array record
    ///         and the key is no index, so that nothing is stored.
    bool setData(DataObject const& object);

    /// Copies the entry \a key of \a source, of any kind, into this record; see Impl::copyDataValue().
    void copyDataFromDataSet(QString const& key, DataSet const& source);

    /// Whether the record and that of \a other have equal content; see Impl::compare().
    bool operator==(DataSet const& other) const;
    /// The reverse of operator== for \a other.
    bool operator!=(DataSet const& other) const;

    /// Stands on the first entry, for a range-based for; each element is a DataObject.
    [[nodiscard]] EntryWalk begin() const;
    /// The end of every walk.
    [[nodiscard]] std::default_sentinel_t end() const { return {}; }

    /// The record, or null.
    std::shared_ptr<Impl::DataSetImpl> data;
};

/// A reference to one entry of a record.
class SOFTPHONECORE_EXPORT DataObject
{
public:
    /// Refers to nothing.
    DataObject() = default;
    /// Refers to the entry \a entryKey of \a record, which need not exist.
    DataObject(std::shared_ptr<Impl::DataSetImpl> record, QString entryKey);

    /// The value of the entry, null when there is none. The pointer is good until the entry is removed.
    ///
    /// Logarithmic in the entries, and constant for an object that a walk stands on.
    [[nodiscard]] MultiType const* value() const;

    /// The record, or null.
    std::shared_ptr<Impl::DataSetImpl> data;
    /// The key of the entry, as text.
    QString key;

protected:
    /// Where a walk found an entry, so that its next step need not look the key up.
    struct WalkPosition
    {
        /// The generation of the record then; 0 for nowhere.
        unsigned long long generation = 0;
        /// The entry, valid while the record has that generation.
        Impl::Entries::const_iterator entry;
    };

    /// The entry that data and key name, or the end of the record, which must exist.
    [[nodiscard]] Impl::Entries::const_iterator entry() const;

    /// Where the walk stands. Callers may give data and key other values, so it is checked before each use.
    WalkPosition m_position;
};

/// Walks the entries of a record in key order.
///
/// The record may be changed during the walk: entries added ahead of the current one are met, and the walk
/// ends when the current one is removed. See Impl::DataSetImpl::entries for how to remove.
///
/// \code
/// DataSets::DataIterator entries(record);
/// while (DataSets::DataObject const* entry = entries.next()) {
///     // entry->key, entry->value()
/// }
/// \endcode
class SOFTPHONECORE_EXPORT DataIterator : public DataObject
{
public:
    /// Stands before the first entry of the record of \a dataSet.
    explicit DataIterator(DataSet const& dataSet);

    /// Steps to the next entry.
    ///
    /// \return this iterator, or null when there are no more entries; atEnd is true then, and key as it was
    DataObject* next();

    /// Steps to the entry \a entryKey; key becomes that text.
    ///
    /// \return this iterator, or null, unmoved, when \a entryKey names no entry
    DataObject* find(QString const& entryKey);

    /// Whether next() has run out of entries.
    bool atEnd = false;

private:
    [[nodiscard]] Impl::Entries::const_iterator following() const;
    void standOn(Impl::Entries::const_iterator found, QString name);

    // An empty key alone means before the first entry, but a record may have an entry under the empty key.
    bool m_onEmptyKey = false;
};

/// The walk of a range-based for over a DataSet.
class SOFTPHONECORE_EXPORT EntryWalk
{
public:
    /// What a walk gives.
    using value_type = DataObject;
    /// Required of an iterator.
    using difference_type = std::ptrdiff_t;

    /// Stands on the first entry of \a dataSet.
    explicit EntryWalk(DataSet const& dataSet);

    /// The current entry, valid until the next step.
    DataObject const& operator*() const { return m_entries; }
    /// The current entry, valid until the next step.
    DataObject const* operator->() const { return &m_entries; }
    /// Steps to the next entry.
    EntryWalk& operator++();
    /// Steps to the next entry.
    void operator++(int) { ++*this; }
    /// Whether there are no more entries.
    bool operator==(std::default_sentinel_t) const { return m_entries.atEnd; }

private:
    DataIterator m_entries;
};

/// The hash of \a dataSet under \a seed, for Qt's hashed containers; equal ones have equal hashes. Of nested
/// records only the number of entries counts. Linear in the entries.
[[nodiscard]] SOFTPHONECORE_EXPORT std::size_t qHash(DataSet const& dataSet, std::size_t seed = 0) noexcept;

/// Writes the entries of \a dataSet to \a debug; records nested more than eight deep are left out.
SOFTPHONECORE_EXPORT QDebug operator<<(QDebug debug, DataSet const& dataSet);

/// What QTest shows of \a dataSet when a comparison fails; the caller frees it with delete[].
[[nodiscard]] SOFTPHONECORE_EXPORT char* toString(DataSet const& dataSet);

} // namespace DataSets

/// The same hash as qHash(), for the standard library's containers.
template <>
struct std::hash<DataSets::DataSet>
{
    /// The hash of \a dataSet.
    std::size_t operator()(DataSets::DataSet const& dataSet) const noexcept { return qHash(dataSet); }
};
