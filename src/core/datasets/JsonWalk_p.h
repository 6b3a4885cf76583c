#pragma once

#include "DataSets_p.h"
#include "MultiTypeKinds_p.h"

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
        enter(record, asArray, false);
        run();
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
        DataSets::Impl::DataSetImpl const* record;
        DataSets::Impl::Entries::const_iterator next;
        bool asArray;
        bool opened; ///< and so to be closed
    };

    /// Tells a datum, by its kind.
    struct Writer
    {
        JsonWalk& walk;

        void operator()(std::monostate) const { walk.m_sink.null(); }
        void operator()(std::shared_ptr<DataSets::Impl::DataSetImpl> const& record) const
        {
            walk.write(record.get());
        }
        // Readers know the numbers above those of an int as negative ones.
        void operator()(unsigned int number) const { walk.m_sink.number(static_cast<int>(number)); }
        void operator()(int number) const { walk.m_sink.number(number); }
        void operator()(bool truth) const { walk.m_sink.boolean(truth); }
        void operator()(QString const& text) const { walk.m_sink.string(text); }
        // JSON has no bytes.
        void operator()(QByteArray const&) const { walk.m_sink.null(); }
        // The numbers of JSON are doubles to most readers, which would round.
        void operator()(long long number) const { walk.m_sink.string(QString::number(number)); }
    };

    void enter(DataSets::Impl::DataSetImpl const& record, bool asArray, bool opened)
    {
        m_inside.insert(&record);
        m_levels.push_back({&record, record.entries.begin(), asArray, opened});
    }

    void leave()
    {
        if (m_levels.back().opened) {
            m_sink.close();
        }
        m_inside.erase(m_levels.back().record);
        m_levels.pop_back();
    }

    void run()
    {
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.next == level.record->entries.end()) {
                leave();
                continue;
            }
            auto const& [key, value] = *level.next++;
            if (!level.asArray) {
                m_sink.name(DataSets::Impl::keyText(key));
            }
            write(value);
        }
    }

    void write(MultiType const& value) { MultiTypeKinds::visit(value, Writer{*this}); }

    void write(DataSets::Impl::DataSetImpl const* record)
    {
        if (m_levels.size() >= Sink::maxDepth || m_inside.contains(record)) {
            m_sink.null();
        } else if (record != nullptr) {
            m_sink.open(record->isArray);
            enter(*record, record->isArray, true);
        } else {
            m_sink.open(false);
            m_sink.close();
        }
    }

    Sink& m_sink;
    std::vector<Level> m_levels;
    std::unordered_set<DataSets::Impl::DataSetImpl const*> m_inside; ///< the records of the levels
};
