#pragma once

#include "DataSets.h"

#include <QByteArray>
#include <memory>

/// Reads the JSON object that \a json consists of, in less time than Qt's parser takes.
///
/// Qt's parser is what decides about JSON here. This one takes the texts that programs write, on which both
/// agree, and leaves all others to it: faults, repeated names, deep nesting and numbers of unusual size.
///
/// \return an object record, or null for a text that is left to Qt's parser
std::shared_ptr<DataSets::Impl::DataSetImpl> readJsonQuickly(QByteArray const& json);
