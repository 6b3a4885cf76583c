#pragma once

#include <softphonecore_export.h>

#include <QByteArray>
#include <QString>
#include <cstddef>
#include <functional>
#include <memory>

class QDebug;

namespace DataSets::Impl {
struct DataSetImpl;
}

/// The value under a key of a DataSets::DataSet: a tagged datum of one of seven kinds, or nothing.
///
/// There is no conversion between kinds: an Int is never read as a long long, a number never as text. A
/// nested record is shared by all copies of the value that holds it. One thread at a time may use a value
/// that is being changed; reading needs no lock.
///
/// \code
/// MultiType value(42);
/// int number = 0;
/// value.get(number);              // 42
/// value = MultiType("forty-two"); // a String now
/// \endcode
class SOFTPHONECORE_EXPORT MultiType
{
public:
    /// What a value holds. The numbers are fixed: callers store and compare them.
    enum Type : int {
        None = 0,      ///< nothing
        DataSet = 1,   ///< a shared nested record
        UInt = 2,      ///< an unsigned 32-bit number
        Int = 3,       ///< a signed 32-bit number
        Bool = 4,      ///< a truth value
        String = 5,    ///< a text
        ByteArray = 6, ///< bytes
        Int64 = 7,     ///< a signed 64-bit number
    };

    /// Makes a value that holds nothing.
    MultiType();
    /// Makes a UInt of \a value.
    MultiType(unsigned int value);
    /// Makes an Int of \a value.
    MultiType(int value);
    /// Makes an Int64 of \a value.
    MultiType(long long value);
    /// Makes a Bool of \a value.
    MultiType(bool value);
    /// Makes a String of \a value.
    MultiType(QString const& value);
    /// Makes a ByteArray of \a value.
    MultiType(QByteArray const& value);
    /// Makes a String of the UTF-8 \a text up to its terminating zero; empty for a null pointer.
    MultiType(char const* text);
    /// Makes a DataSet of \a record, which is shared and may be null.
    MultiType(std::shared_ptr<DataSets::Impl::DataSetImpl> const& record);
    /// Copies \a other; a nested record is shared.
    MultiType(MultiType const& other);

    /// Pointers to anything but char would silently become a Bool.
    template <typename T>
    MultiType(T const*) = delete;

    /// Releases what the value holds.
    ~MultiType();

    /// Makes this value a copy of \a other, as clone() does.
    MultiType& operator=(MultiType const& other);

    /// Forgets what the value holds: it holds nothing then.
    void clean();

    /// Makes this value a copy of \a other and returns the new tag.
    ///
    /// \a other may be this value itself, or lie inside the record that this value holds.
    int clone(MultiType const& other);

    /// Whether this value and \a other have the same tag and the same content.
    ///
    /// Nested records are compared by content with DataSets::Impl::compare(), text by UTF-16 code unit.
    bool operator==(MultiType const& other) const;

    /// The tag, one of Type.
    [[nodiscard]] int getType() const;

    /// Copies the datum into \a value when this is a UInt; else leaves \a value as it is.
    void get(unsigned int& value) const;
    /// Copies the datum into \a value when this is an Int; else leaves \a value as it is.
    void get(int& value) const;
    /// Copies the datum into \a value when this is an Int64; else leaves \a value as it is.
    void get(long long& value) const;
    /// Copies the datum into \a value when this is a Bool; else leaves \a value as it is.
    void get(bool& value) const;
    /// Copies the datum into \a value when this is a String; else leaves \a value as it is.
    void get(QString& value) const;
    /// Copies the datum into \a value when this is a ByteArray; else leaves \a value as it is.
    void get(QByteArray& value) const;
    /// Shares the nested record with \a value when this is a DataSet; else leaves \a value as it is.
    void get(std::shared_ptr<DataSets::Impl::DataSetImpl>& value) const;

    /// Hands the datum to \a value and holds nothing afterwards when this is a UInt; else does nothing.
    void move(unsigned int& value);
    /// Hands the datum to \a value and holds nothing afterwards when this is an Int; else does nothing.
    void move(int& value);
    /// Hands the datum to \a value and holds nothing afterwards when this is an Int64; else does nothing.
    void move(long long& value);
    /// Hands the datum to \a value and holds nothing afterwards when this is a Bool; else does nothing.
    void move(bool& value);
    /// Hands the text to \a value and holds nothing afterwards when this is a String; else does nothing.
    ///
    /// The former text of \a value is kept until this value is next cleaned, assigned or destroyed.
    void move(QString& value);
    /// Hands the bytes to \a value and holds nothing afterwards when this is a ByteArray; else does nothing.
    ///
    /// The former bytes of \a value are kept until this value is next cleaned, assigned or destroyed.
    void move(QByteArray& value);
    /// Hands the nested record to \a value and holds nothing afterwards when this is a DataSet; else does
    /// nothing. The former record of \a value is released.
    void move(std::shared_ptr<DataSets::Impl::DataSetImpl>& value);

private:
    std::shared_ptr<DataSets::Impl::DataSetImpl> set;
    unsigned int uintValue = 0;
    int intValue = 0;
    long long int64Value = 0;
    bool boolValue = false;
    QString stringValue;
    QByteArray bytesValue;
    Type type = None;

    friend struct MultiTypeKinds;
};

/// The hash of \a value under \a seed, for Qt's hashed containers; equal ones have equal hashes. Of records
/// nested in a nested record only the number of entries counts.
[[nodiscard]] SOFTPHONECORE_EXPORT std::size_t qHash(MultiType const& value, std::size_t seed = 0) noexcept;

/// Writes the kind and datum of \a value to \a debug; records nested more than eight deep are left out.
SOFTPHONECORE_EXPORT QDebug operator<<(QDebug debug, MultiType const& value);

/// What QTest shows of \a value when a comparison fails; the caller frees it with delete[].
[[nodiscard]] SOFTPHONECORE_EXPORT char* toString(MultiType const& value);

/// The same hash as qHash(), for the standard library's containers.
template <>
struct std::hash<MultiType>
{
    /// The hash of \a value.
    std::size_t operator()(MultiType const& value) const noexcept { return qHash(value); }
};
