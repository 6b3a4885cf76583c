#pragma once

#include "DataSets.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <memory>
#include <vector>

/// Stores JSON values in records.
///
/// A nested record is stored empty and filled when the one around it is complete, so that depth costs no
/// stack.
class JsonReader
{
public:
    void read(QJsonObject const& object, DataSets::Impl::DataSetImpl& target);
    void read(QJsonArray const& array, DataSets::Impl::DataSetImpl& target);
    void read(QString const& name, QJsonValue const& value, DataSets::Impl::DataSetImpl& target);

private:
    struct Nested
    {
        QJsonValue content;
        /// Owned: a later name of the same index may have taken its place in the record around it.
        std::shared_ptr<DataSets::Impl::DataSetImpl> target;
    };

    void fill(QJsonObject const& object, DataSets::Impl::DataSetImpl& target);
    void fill(QJsonArray const& array, DataSets::Impl::DataSetImpl& target);
    void store(DataSets::Impl::Key key, QJsonValue const& value, DataSets::Impl::DataSetImpl& target);
    void fillNested();

    std::vector<Nested> m_nested;
};
