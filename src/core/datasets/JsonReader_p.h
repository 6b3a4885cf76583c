#pragma once

#include "DataSets_p.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <vector>

/// Stores JSON values in records.
///
/// A nested record is stored empty and filled when the one around it is complete, so that depth costs no
/// stack. May throw std::bad_alloc.
class JsonReader
{
public:
    void read(QJsonObject const& object, DataSets::Impl::DataSetImpl& target);
    void read(QJsonArray const& array, DataSets::Impl::DataSetImpl& target);
    void read(QString const& name, QJsonValue const& value, DataSets::Impl::DataSetImpl& target);

private:
    struct Nested
    {
        QJsonObject object;
        QJsonArray array;
        DataSets::Impl::DataSetImpl* target;
    };

    void fill(QJsonObject const& object, DataSets::Impl::DataSetImpl& target);
    void fill(QJsonArray const& array, DataSets::Impl::DataSetImpl& target);
    template <typename Value>
    void store(DataSets::Impl::Key key, Value const& value, DataSets::Impl::DataSetImpl& target);
    void fillNested();

    std::vector<Nested> m_nested;
};
