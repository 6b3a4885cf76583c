#include "DataSets.h"

#include "../Boundary_p.h"
#include "DataSets_p.h"
#include "Entries_p.h"
#include "MultiType_p.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <set>
#include <utility>
#include <vector>

namespace DataSets {
namespace Impl {
namespace {

using Pending = std::vector<std::shared_ptr<DataSetImpl>>;
using RecordPair = std::pair<DataSetImpl const*, DataSetImpl const*>;

template <typename Record>
auto findEntry(Record& record, QString const& key)
{
    if (!record.isArray) {
        return record.entries.find(key);
    }
    std::optional<int> const index = parseIndex(key);
    return index ? record.entries.find(*index) : record.entries.end();
}

/// Makes \a text that of \a key; the text of an index goes where the one before it was, if nobody shares
/// that.
void copyKeyText(Key const& key, QString& text)
{
    if (QString const* const stored = std::get_if<QString>(&key)) {
        text = *stored;
        return;
    }
    std::array<char, std::numeric_limits<int>::digits10 + 2> digits;
    char const* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), std::get<int>(key)).ptr;
    text.resize(end - digits.data());
    std::transform(static_cast<char const*>(digits.data()), end, text.begin(),
                   [](char digit) { return QLatin1Char(digit); });
}

bool isNamedBy(Key const& key, QString const& text)
{
    QString const* const stored = std::get_if<QString>(&key);
    return stored != nullptr ? *stored == text : parseIndex(text) == std::get<int>(key);
}

void releaseNested(Entries& entries, Pending& pending)
{
    for (auto& [key, value] : entries) {
        if (value.getType() == MultiType::DataSet) {
            std::shared_ptr<DataSetImpl> nested;
            value.move(nested);
            pending.push_back(std::move(nested));
        }
    }
}

/// Releases what is nested in \a entries one record after the other: were it left to their destructors, one
/// would run inside the other, and deep nesting would use up the stack.
void releaseFlat(Entries& entries)
{
    static constinit thread_local Pending* underway = nullptr;
    if (underway != nullptr) {
        releaseNested(entries, *underway);
        return;
    }
    Pending pending;
    underway = &pending;
    guarded([&] { releaseNested(entries, pending); });
    while (!pending.empty()) {
        std::shared_ptr<DataSetImpl> const record = std::move(pending.back());
        pending.pop_back();
    }
    underway = nullptr;
}

/// Compares two records and collects the pairs of records nested in them.
class Comparison
{
public:
    Comparison(DataSetImpl const* first, DataSetImpl const* second) { m_pending.emplace_back(first, second); }

    bool run()
    {
        m_met.insert(m_pending.back());
        while (!m_pending.empty()) {
            RecordPair const pair = m_pending.back();
            m_pending.pop_back();
            if (!haveEqualEntries(pair.first, pair.second)) {
                return false;
            }
        }
        return true;
    }

private:
    bool haveEqualEntries(DataSetImpl const* first, DataSetImpl const* second)
    {
        if (first == second) {
            return true;
        }
        if (first == nullptr || second == nullptr) {
            return getDataCount(first) == getDataCount(second);
        }
        auto const equal = [this](auto const& left, auto const& right) {
            return left.first == right.first && equalOrPending(left.second, right.second);
        };
        return first->isArray == second->isArray && first->entries.size() == second->entries.size() &&
               std::equal(first->entries.begin(), first->entries.end(), second->entries.begin(), equal);
    }

    bool equalOrPending(MultiType const& left, MultiType const& right)
    {
        if (left.getType() != MultiType::DataSet || right.getType() != MultiType::DataSet) {
            return left == right;
        }
        auto const& first = MultiTypeSlots::record(left);
        auto const& second = MultiTypeSlots::record(right);
        // Only records with several owners can be met twice, as in a record that contains itself.
        bool const mayRecur = first.use_count() > 1 && second.use_count() > 1;
        if (!mayRecur || m_met.emplace(first.get(), second.get()).second) {
            m_pending.emplace_back(first.get(), second.get());
        }
        return true;
    }

    std::vector<RecordPair> m_pending;
    std::set<RecordPair> m_met;
};

template <typename T>
bool copyOut(DataSetImpl const* record, QString const& key, int type, T& target)
{
    MultiType const* const value = getValueImpl(record, key);
    if (value == nullptr || value->getType() != type) {
        return false;
    }
    value->get(target);
    return true;
}

template <typename T>
bool moveOut(DataSetImpl& record, QString const& key, int type, T& target)
{
    MultiType value = extractValueImpl(record, key);
    if (value.getType() != type) {
        return false;
    }
    value.move(target);
    return true;
}

} // namespace

std::optional<int> parseIndex(QStringView text)
{
    // Plain digits, which nearly all index texts are, need no help.
    constexpr qsizetype alwaysFits = 9;
    auto const isDigit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    if (!text.isEmpty() && text.size() <= alwaysFits && std::all_of(text.begin(), text.end(), isDigit)) {
        int index = 0;
        for (QChar const digit : text) {
            index = index * 10 + (digit.unicode() - '0');
        }
        return index;
    }
    bool ok = false;
    int const index = text.toInt(&ok);
    return ok ? std::optional<int>(index) : std::nullopt;
}

QString keyText(Key const& key)
{
    QString const* const text = std::get_if<QString>(&key);
    return text != nullptr ? *text : QString::number(std::get<int>(key));
}

DataSetImpl::DataSetImpl(bool array)
    : isArray(array)
{
}

DataSetImpl::~DataSetImpl()
{
    guarded([this] { releaseFlat(entries); });
}

std::shared_ptr<DataSetImpl> createDS(bool isArray)
{
    return guarded([isArray] { return std::make_shared<DataSetImpl>(isArray); });
}

bool compare(DataSetImpl const* first, DataSetImpl const* second)
{
    return guarded([=] { return Comparison(first, second).run(); });
}

MultiType const* getValueImpl(DataSetImpl const* record, QString const& key)
{
    if (record == nullptr) {
        return nullptr;
    }
    auto const found = findEntry(*record, key);
    return found == record->entries.end() ? nullptr : &found->second;
}

MultiType const* getNextValueImpl(DataSetImpl const* record, QString& key)
{
    if (record == nullptr) {
        return nullptr;
    }
    auto next = record->entries.begin();
    if (!key.isEmpty()) {
        next = findEntry(*record, key);
        if (next != record->entries.end()) {
            ++next;
        }
    }
    if (next == record->entries.end()) {
        return nullptr;
    }
    key = keyText(next->first);
    return &next->second;
}

void setValueImpl(DataSetImpl& record, QString const& key, MultiType const& value)
{
    guarded([&] {
        if (!record.isArray) {
            EntriesEditor::insertOrAssign(record.entries, key, value);
        } else if (std::optional<int> const index = parseIndex(key)) {
            EntriesEditor::insertOrAssign(record.entries, *index, value);
        }
    });
}

MultiType extractValueImpl(DataSetImpl& record, QString const& key)
{
    auto const found = findEntry(record, key);
    if (found == record.entries.end()) {
        return {};
    }
    return EntriesEditor::extract(record.entries, found)->second;
}

bool deleteValueImpl(DataSetImpl& record, QString const& key)
{
    auto const found = record.entries.find(key);
    if (found == record.entries.end()) {
        return true;
    }
    extractValueImpl(record, key);
    return false;
}

bool deleteDataValue(DataSetImpl& record, QString const& key)
{
    return deleteValueImpl(record, key);
}

void clearImpl(DataSetImpl& record)
{
    EntriesEditor::clear(record.entries);
}

void clearDataObjects(DataSetImpl& record)
{
    clearImpl(record);
}

int getDataType(DataSetImpl const* record, QString const& key)
{
    MultiType const* const value = getValueImpl(record, key);
    return value == nullptr ? MultiType::None : value->getType();
}

int getDataCount(DataSetImpl const* record)
{
    return record == nullptr ? 0 : static_cast<int>(record->entries.size());
}

bool isValidKey(DataSetImpl const& record, QString const& key)
{
    return !record.isArray || parseIndex(key).has_value();
}

void copyDataValueImpl(DataSetImpl* target, QString const& key, DataSetImpl const* source)
{
    if (target == nullptr || source == nullptr || target->isArray != source->isArray) {
        return;
    }
    if (MultiType const* const value = getValueImpl(source, key)) {
        setValueImpl(*target, key, *value);
    }
}

void copyDataValue(DataSetImpl* target, QString const& key, DataSetImpl const* source)
{
    copyDataValueImpl(target, key, source);
}

bool getDataValue(DataSetImpl const* record, QString const& key, std::shared_ptr<DataSetImpl>& target)
{
    return copyOut(record, key, MultiType::DataSet, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, bool& target)
{
    return copyOut(record, key, MultiType::Bool, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, unsigned int& target)
{
    return copyOut(record, key, MultiType::UInt, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, int& target)
{
    return copyOut(record, key, MultiType::Int, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, long long& target)
{
    return copyOut(record, key, MultiType::Int64, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, QString& target)
{
    return copyOut(record, key, MultiType::String, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, QByteArray& target)
{
    return copyOut(record, key, MultiType::ByteArray, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, std::shared_ptr<DataSetImpl>& target)
{
    return moveOut(record, key, MultiType::DataSet, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, bool& target)
{
    return moveOut(record, key, MultiType::Bool, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, unsigned int& target)
{
    return moveOut(record, key, MultiType::UInt, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, int& target)
{
    return moveOut(record, key, MultiType::Int, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, long long& target)
{
    return moveOut(record, key, MultiType::Int64, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, QString& target)
{
    return moveOut(record, key, MultiType::String, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, QByteArray& target)
{
    return moveOut(record, key, MultiType::ByteArray, target);
}

void setDataValue(DataSetImpl& record, QString const& key, std::shared_ptr<DataSetImpl> const& value)
{
    setValueImpl(record, key, value);
}

void setDataValue(DataSetImpl& record, QString const& key, bool value)
{
    setValueImpl(record, key, value);
}

void setDataValue(DataSetImpl& record, QString const& key, unsigned int value)
{
    setValueImpl(record, key, value);
}

void setDataValue(DataSetImpl& record, QString const& key, int value)
{
    setValueImpl(record, key, value);
}

void setDataValue(DataSetImpl& record, QString const& key, long long value)
{
    setValueImpl(record, key, value);
}

void setDataValue(DataSetImpl& record, QString const& key, QString const& value)
{
    setValueImpl(record, key, value);
}

void setDataValue(DataSetImpl& record, QString const& key, QByteArray const& value)
{
    setValueImpl(record, key, value);
}

void setDataValue(DataSetImpl& record, QString const& key, char const* value)
{
    setValueImpl(record, key, value);
}

void emplaceDataValue(DataSetImpl& record, QString const& key, std::shared_ptr<DataSetImpl>& value)
{
    setValueImpl(record, key, value);
}

void emplaceDataValue(DataSetImpl& record, QString const& key, bool& value)
{
    setValueImpl(record, key, value);
}

void emplaceDataValue(DataSetImpl& record, QString const& key, unsigned int& value)
{
    setValueImpl(record, key, value);
}

void emplaceDataValue(DataSetImpl& record, QString const& key, int& value)
{
    setValueImpl(record, key, value);
}

void emplaceDataValue(DataSetImpl& record, QString const& key, long long& value)
{
    setValueImpl(record, key, value);
}

void emplaceDataValue(DataSetImpl& record, QString const& key, QString& value)
{
    setValueImpl(record, key, value);
}

void emplaceDataValue(DataSetImpl& record, QString const& key, QByteArray& value)
{
    setValueImpl(record, key, value);
}

} // namespace Impl

DataSet::DataSet() = default;

DataSet::DataSet(std::shared_ptr<Impl::DataSetImpl> record)
    : data(std::move(record))
{
}

DataSet DataSet::createObject()
{
    return DataSet(Impl::createDS(false));
}

DataSet DataSet::createArray()
{
    return DataSet(Impl::createDS(true));
}

bool DataSet::isEmpty() const
{
    return count() == 0;
}

bool DataSet::isArray() const
{
    return data && data->isArray;
}

bool DataSet::contains(QString const& key) const
{
    return Impl::getValueImpl(data.get(), key) != nullptr;
}

int DataSet::count() const
{
    return Impl::getDataCount(data.get());
}

int DataSet::type(QString const& key) const
{
    return Impl::getDataType(data.get(), key);
}

bool DataSet::deleteValue(QString const& key)
{
    return !data || Impl::deleteDataValue(*data, key);
}

void DataSet::clear()
{
    if (data) {
        Impl::clearDataObjects(*data);
    }
}

void DataSet::copyDataSet(DataSet const& other)
{
    for (DataObject const& object : other) {
        setData(object);
    }
}

bool DataSet::setData(DataObject const& object)
{
    MultiType const* const value = object.value();
    if (!data || value == nullptr) {
        return false;
    }
    switch (value->getType()) {
    case MultiType::None:
    case MultiType::ByteArray:
    case MultiType::Int64:
        return false;
    default:
        Impl::setValueImpl(*data, object.key, *value);
        return true;
    }
}

void DataSet::copyDataFromDataSet(QString const& key, DataSet const& source)
{
    Impl::copyDataValue(data.get(), key, source.data.get());
}

bool DataSet::operator==(DataSet const& other) const
{
    return Impl::compare(data.get(), other.data.get());
}

bool DataSet::operator!=(DataSet const& other) const
{
    return !(*this == other);
}

EntryWalk DataSet::begin() const
{
    return EntryWalk(*this);
}

DataObject::DataObject(std::shared_ptr<Impl::DataSetImpl> record, QString entryKey)
    : data(std::move(record))
    , key(std::move(entryKey))
{
}

Impl::Entries::const_iterator DataObject::entry() const
{
    bool const found =
        isInPlace() || (m_place.stamp == data->entries.stamp() && Impl::isNamedBy(m_place.entry->first, key));
    return found ? m_place.entry : Impl::findEntry(std::as_const(*data), key);
}

MultiType const* DataObject::lookUp() const
{
    if (!data) {
        return nullptr;
    }
    auto const found = entry();
    return found == data->entries.end() ? nullptr : &found->second;
}

DataObject* DataIterator::next()
{
    if (stepInPlace()) {
        return atEnd ? nullptr : this;
    }
    return stepByKey();
}

DataObject* DataIterator::stepByKey()
{
    if (atEnd) {
        return nullptr;
    }
    atEnd = true;
    if (!data) {
        return nullptr;
    }
    auto following = data->entries.cbegin();
    if (!key.isEmpty() || m_onEmptyKey) {
        following = entry();
        if (following != data->entries.cend()) {
            ++following;
        }
    }
    if (following == data->entries.cend()) {
        return nullptr;
    }
    Impl::copyKeyText(following->first, key);
    standOn(following);
    return this;
}

DataObject* DataIterator::find(QString const& entryKey)
{
    if (!data) {
        return nullptr;
    }
    auto const found = Impl::findEntry(std::as_const(*data), entryKey);
    if (found == data->entries.cend()) {
        return nullptr;
    }
    key = entryKey;
    standOn(found);
    return this;
}

void DataIterator::standOn(Impl::Entries::const_iterator found)
{
    m_place = {data->entries.stamp(), found};
    m_onEmptyKey = key.isEmpty();
    atEnd = false;
}

} // namespace DataSets
