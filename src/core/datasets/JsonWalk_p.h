#pragma once

#include "DataSets_p.h"
#include "MultiType_p.h"

#include <unordered_set>
#include <vector>

/// Walks a record and everything nested in it, and tells a sink what to write as JSON.
///
/// The sink has null(), boolean(bool), number(int), string(QString const&), name(QString const&),
/// open(bool isArray) and close(), and says with maxDepth how many levels it takes; null stands for what
/// is nested deeper. Null also stands for a record that the walk is already inside of. The levels are kept
/// on the heap, so that depth costs no stack.
template <typename Sink>
class JsonWalk
{
public:
    explicit JsonWalk(Sink& sink)
        : m_sink(sink)
    {
    }

    /// Tells the entries of \a record, without opening and closing it; \a asArray leaves the names out.
    void members(DataSets::Impl::DataSetImpl const& record, bool asArray)
    {
        m_inside.insert(&record);
        push(record, asArray, false);
        run();
        m_inside.erase(&record);
    }

    /// Tells one value.
    void value(MultiType const& value)
    {
        write(value);
        run();
    }

private:
    struct Level
    {
        DataSets::Impl::Entries::const_iterator next;
        DataSets::Impl::Entries::const_iterator end;
        DataSets::Impl::DataSetImpl const* record;
        bool asArray;
        bool nested; ///< opened by this walk
        bool shared; ///< met again if the record contains itself
    };

    void push(DataSets::Impl::DataSetImpl const& record, bool asArray, bool nested, bool shared = false)
    {
        m_levels.push_back({record.entries.begin(), record.entries.end(), &record, asArray, nested, shared});
    }

    void run()
    {
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.next == level.end) {
                leave(level);
                continue;
            }
            auto const& [key, value] = *level.next;
            ++level.next;
            if (!level.asArray) {
                m_sink.name(DataSets::Impl::keyText(key));
            }
            write(value);
        }
    }

    void leave(Level const& level)
    {
        if (level.nested) {
            m_sink.close();
        }
        if (level.shared) {
            m_inside.erase(level.record);
        }
        m_levels.pop_back();
    }

    void write(MultiType const& value)
    {
        switch (value.getType()) {
        case MultiType::DataSet:
            enter(MultiTypeSlots::record(value));
            break;
        case MultiType::UInt: {
            unsigned int number = 0;
            value.get(number);
            m_sink.number(static_cast<int>(number));
            break;
        }
        case MultiType::Int: {
            int number = 0;
            value.get(number);
            m_sink.number(number);
            break;
        }
        case MultiType::Bool: {
            bool truth = false;
            value.get(truth);
            m_sink.boolean(truth);
            break;
        }
        case MultiType::String:
            m_sink.string(MultiTypeSlots::string(value));
            break;
        case MultiType::Int64: {
            long long number = 0;
            value.get(number);
            m_sink.string(QString::number(number));
            break;
        }
        default:
            m_sink.null();
        }
    }

    void enter(std::shared_ptr<DataSets::Impl::DataSetImpl> const& record)
    {
        // A record with one owner cannot contain itself.
        bool const shared = record.use_count() > 1;
        if (m_levels.size() >= Sink::maxDepth || (shared && !m_inside.insert(record.get()).second)) {
            m_sink.null();
            return;
        }
        bool const isArray = record && record->isArray;
        m_sink.open(isArray);
        if (record) {
            push(*record, isArray, true, shared);
        } else {
            m_sink.close();
        }
    }

    Sink& m_sink;
    std::vector<Level> m_levels;
    std::unordered_set<DataSets::Impl::DataSetImpl const*> m_inside;
};
