#pragma once

#include "MultiType.h"

#include <cstddef>
#include <tuple>
#include <utility>
#include <variant>

/// The kinds of value: in which slot each of them lives, and what it is called where values are shown.
///
/// Whatever else differs from kind to kind is an object with a call operator for every type of datum, which
/// visit() calls. A kind that one of these objects does not know does not compile.
struct MultiTypeKinds
{
    template <typename Datum>
    struct Kind
    {
        MultiType::Type tag;
        Datum MultiType::*slot;
        char const* name;
    };

    static constexpr std::tuple table{
        Kind<std::shared_ptr<DataSets::Impl::DataSetImpl>>{MultiType::DataSet, &MultiType::set, "DataSet"},
        Kind<unsigned int>{MultiType::UInt, &MultiType::uintValue, "UInt"},
        Kind<int>{MultiType::Int, &MultiType::intValue, "Int"},
        Kind<bool>{MultiType::Bool, &MultiType::boolValue, "Bool"},
        Kind<QString>{MultiType::String, &MultiType::stringValue, "String"},
        Kind<QByteArray>{MultiType::ByteArray, &MultiType::bytesValue, "ByteArray"},
        Kind<long long>{MultiType::Int64, &MultiType::int64Value, "Int64"},
    };
    static constexpr std::size_t count = std::tuple_size_v<decltype(table)>;

    /// The datum of \a value when it is a \a Datum, else null.
    template <typename Datum>
    static Datum const* find(MultiType const& value)
    {
        constexpr Kind<Datum> kind = std::get<Kind<Datum>>(table);
        return value.type == kind.tag ? &(value.*kind.slot) : nullptr;
    }

    /// Hands the datum of \a value to \a target and holds nothing afterwards, when it is a \a Datum.
    template <typename Datum>
    static void move(MultiType& value, Datum& target)
    {
        constexpr Kind<Datum> kind = std::get<Kind<Datum>>(table);
        if (value.type == kind.tag) {
            // The tag first: the value may lie inside the record that the target gives up.
            value.type = MultiType::None;
            handOver(value.*kind.slot, target);
        }
    }

    /// Calls \a visitor with the datum of \a value, or with std::monostate when it holds nothing.
    template <std::size_t row = 0, typename Visitor>
    static auto visit(MultiType const& value, Visitor&& visitor)
    {
        if constexpr (row == count) {
            return visitor(std::monostate());
        } else {
            constexpr auto kind = std::get<row>(table);
            return value.type == kind.tag ? visitor(value.*kind.slot)
                                          : visit<row + 1>(value, std::forward<Visitor>(visitor));
        }
    }

    /// Swaps every slot of \a left, live or not, with that of \a right, and the tags.
    static void swap(MultiType& left, MultiType& right)
    {
        std::apply([&](auto const&... kind) { (std::swap(left.*kind.slot, right.*kind.slot), ...); }, table);
        std::swap(left.type, right.type);
    }

private:
    template <typename Number>
    static void handOver(Number& slot, Number& target)
    {
        target = std::exchange(slot, Number());
    }
    static void handOver(QString& slot, QString& target) { slot.swap(target); }
    static void handOver(QByteArray& slot, QByteArray& target) { slot.swap(target); }
};
