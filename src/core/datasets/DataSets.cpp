#include "DataSets.h"

#include "DataSets_p.h"
#include "MultiTypeKinds_p.h"

#include <algorithm>
#include <atomic>
#include <set>
#include <utility>
#include <vector>

namespace DataSets {
namespace Impl {
namespace {

using RecordPointer = std::shared_ptr<DataSetImpl>;
using RecordPair = std::pair<DataSetImpl const*, DataSetImpl const*>;

template <typename Datum>
concept HasTypedFamilies = requires(DataSetImpl& record, QString const& key, Datum& datum)
{
    getDataValue(&record, key, datum);
    moveDataValue(record, key, datum);
    setDataValue(record, key, datum);
    emplaceDataValue(record, key, datum);
};

template <typename... Datum>
constexpr bool allHaveTypedFamilies(std::tuple<MultiTypeKinds::Kind<Datum>...> const&)
{
    return (HasTypedFamilies<Datum> && ...);
}

static_assert(allHaveTypedFamilies(MultiTypeKinds::table),
              "every kind of value is got, moved, set, emplaced");

/// Shared by all records, so that a number tells the record as well as its state.
unsigned long long nextGeneration()
{
    static std::atomic<unsigned long long> last = 0;
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::optional<int> indexOf(QStringView name)
{
    bool ok = false;
    int const index = name.toInt(&ok);
    return ok ? std::optional<int>(index) : std::nullopt;
}

/// The entry that callers call \a name, or the end of \a record.
template <typename Record>
auto findEntry(Record& record, QString const& name)
{
    if (!record.isArray) {
        return record.entries.find(name);
    }
    std::optional<int> const index = indexOf(name);
    return index ? record.entries.find(*index) : record.entries.end();
}

bool isNamed(Key const& key, QString const& name)
{
    QString const* const text = std::get_if<QString>(&key);
    return text != nullptr ? *text == name : indexOf(name) == std::get<int>(key);
}

/// Takes an entry out of \a record; it is released with the result, when the record is whole again.
Entries::node_type extractEntry(DataSetImpl& record, Entries::const_iterator entry)
{
    record.generation = nextGeneration();
    return record.entries.extract(entry);
}

void moveNestedTo(std::vector<RecordPointer>& nested, Entries& entries)
{
    for (auto& [key, value] : entries) {
        if (value.getType() == MultiType::DataSet) {
            value.move(nested.emplace_back());
        }
    }
}

/// Releases what is nested in \a entries one record after the other: were it left to their destructors, one
/// would run inside the other, and deep nesting would use up the stack.
void releaseNested(Entries& entries)
{
    // Set while a call further out on this thread works through its list; what is found here joins that.
    static constinit thread_local std::vector<RecordPointer>* underway = nullptr;
    if (underway != nullptr) {
        moveNestedTo(*underway, entries);
        return;
    }
    std::vector<RecordPointer> pending;
    underway = &pending;
    moveNestedTo(pending, entries);
    while (!pending.empty()) {
        RecordPointer const record = std::move(pending.back());
        pending.pop_back();
    }
    underway = nullptr;
}

/// Whether two records are equal but for what is nested in them, which goes to \a nested, pair by pair.
bool haveEqualEntries(RecordPair const& records, std::vector<RecordPair>& nested)
{
    auto const [first, second] = records;
    if (first == second) {
        return true;
    }
    // A data set without a record equals an empty one, array or not.
    if (first == nullptr || second == nullptr) {
        return getDataCount(first) == getDataCount(second);
    }
    auto const isEqual = [&nested](Entries::value_type const& left, Entries::value_type const& right) {
        auto const* const leftRecord = MultiTypeKinds::find<RecordPointer>(left.second);
        auto const* const rightRecord = MultiTypeKinds::find<RecordPointer>(right.second);
        if (leftRecord != nullptr && rightRecord != nullptr) {
            nested.emplace_back(leftRecord->get(), rightRecord->get());
            return left.first == right.first;
        }
        return left.first == right.first && left.second == right.second;
    };
    return first->isArray == second->isArray &&
           std::equal(first->entries.begin(), first->entries.end(), second->entries.begin(),
                      second->entries.end(), isEqual);
}

template <typename Datum>
bool copyOut(DataSetImpl const* record, QString const& key, Datum& target)
{
    MultiType const* const value = getValueImpl(record, key);
    Datum const* const datum = value != nullptr ? MultiTypeKinds::find<Datum>(*value) : nullptr;
    if (datum == nullptr) {
        return false;
    }
    target = *datum;
    return true;
}

template <typename Datum>
bool moveOut(DataSetImpl& record, QString const& key, Datum& target)
{
    // The entry goes even when its value is of another kind and the target stays as it was.
    MultiType value = extractValueImpl(record, key);
    bool const matches = MultiTypeKinds::find<Datum>(value) != nullptr;
    value.move(target);
    return matches;
}

} // namespace

std::optional<Key> keyFor(DataSetImpl const& record, QString const& name)
{
    if (!record.isArray) {
        return name;
    }
    return indexOf(name);
}

QString keyText(Key const& key)
{
    QString const* const text = std::get_if<QString>(&key);
    return text != nullptr ? *text : QString::number(std::get<int>(key));
}

DataSetImpl::DataSetImpl(bool array)
    : isArray(array)
    , generation(nextGeneration())
{
}

DataSetImpl::~DataSetImpl()
{
    releaseNested(entries);
}

std::shared_ptr<DataSetImpl> createDS(bool isArray)
{
    return std::make_shared<DataSetImpl>(isArray);
}

bool compare(DataSetImpl const* first, DataSetImpl const* second)
{
    std::vector<RecordPair> pending{{first, second}};
    // No pair twice: records that contain themselves would never come to an end, and those that are reached
    // in many ways not soon.
    std::set<RecordPair> met;
    while (!pending.empty()) {
        RecordPair const records = pending.back();
        pending.pop_back();
        if (met.insert(records).second && !haveEqualEntries(records, pending)) {
            return false;
        }
    }
    return true;
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
    // The empty name asks for the first entry, so a walk by names cannot get past an entry of that name.
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
    if (std::optional<Key> stored = keyFor(record, key)) {
        record.entries.insert_or_assign(*std::move(stored), value);
    }
}

MultiType extractValueImpl(DataSetImpl& record, QString const& key)
{
    auto const found = findEntry(record, key);
    return found == record.entries.end() ? MultiType() : extractEntry(record, found).mapped();
}

bool deleteValueImpl(DataSetImpl& record, QString const& key)
{
    // Looked up as a name also in an array, where it finds nothing; and true says that nothing was removed.
    // Callers have come to count on both.
    auto const found = record.entries.find(key);
    if (found == record.entries.end()) {
        return true;
    }
    extractEntry(record, found);
    return false;
}

bool deleteDataValue(DataSetImpl& record, QString const& key)
{
    return deleteValueImpl(record, key);
}

void clearImpl(DataSetImpl& record)
{
    record.generation = nextGeneration();
    // Released when the record is whole again.
    Entries const released = std::exchange(record.entries, {});
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
    return keyFor(record, key).has_value();
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
    return copyOut(record, key, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, bool& target)
{
    return copyOut(record, key, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, unsigned int& target)
{
    return copyOut(record, key, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, int& target)
{
    return copyOut(record, key, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, long long& target)
{
    return copyOut(record, key, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, QString& target)
{
    return copyOut(record, key, target);
}

bool getDataValue(DataSetImpl const* record, QString const& key, QByteArray& target)
{
    return copyOut(record, key, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, std::shared_ptr<DataSetImpl>& target)
{
    return moveOut(record, key, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, bool& target)
{
    return moveOut(record, key, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, unsigned int& target)
{
    return moveOut(record, key, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, int& target)
{
    return moveOut(record, key, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, long long& target)
{
    return moveOut(record, key, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, QString& target)
{
    return moveOut(record, key, target);
}

bool moveDataValue(DataSetImpl& record, QString const& key, QByteArray& target)
{
    return moveOut(record, key, target);
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

namespace {

/// The kinds that DataSet::setData() copies. Callers count on ByteArray and Int64 being left out.
struct IsCopiedBySetData
{
    bool operator()(std::monostate) const { return false; }
    bool operator()(std::shared_ptr<Impl::DataSetImpl> const&) const { return true; }
    bool operator()(unsigned int) const { return true; }
    bool operator()(int) const { return true; }
    bool operator()(bool) const { return true; }
    bool operator()(QString const&) const { return true; }
    bool operator()(QByteArray const&) const { return false; }
    bool operator()(long long) const { return false; }
};

} // namespace

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
    if (!MultiTypeKinds::visit(*value, IsCopiedBySetData())) {
        return false;
    }
    Impl::setValueImpl(*data, object.key, *value);
    return true;
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
    // A removal may have released the remembered entry, and the key is the caller's to change: only when
    // neither has happened is the look-up saved.
    bool const holds =
        m_position.generation == data->generation && Impl::isNamed(m_position.entry->first, key);
    return holds ? m_position.entry : Impl::findEntry(std::as_const(*data), key);
}

MultiType const* DataObject::value() const
{
    if (!data) {
        return nullptr;
    }
    auto const found = entry();
    return found == data->entries.end() ? nullptr : &found->second;
}

DataIterator::DataIterator(DataSet const& dataSet)
    : DataObject(dataSet.data, {})
{
}

DataObject* DataIterator::next()
{
    if (atEnd || !data) {
        atEnd = true;
        return nullptr;
    }
    auto const found = following();
    if (found == data->entries.cend()) {
        atEnd = true;
        return nullptr;
    }
    standOn(found, Impl::keyText(found->first));
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
    standOn(found, entryKey);
    return this;
}

Impl::Entries::const_iterator DataIterator::following() const
{
    if (key.isEmpty() && !m_onEmptyKey) {
        return data->entries.cbegin();
    }
    auto const current = entry();
    return current == data->entries.cend() ? current : std::next(current);
}

void DataIterator::standOn(Impl::Entries::const_iterator found, QString name)
{
    key = std::move(name);
    m_position = {data->generation, found};
    m_onEmptyKey = key.isEmpty();
    atEnd = false;
}

EntryWalk::EntryWalk(DataSet const& dataSet)
    : m_entries(dataSet)
{
    m_entries.next();
}

EntryWalk& EntryWalk::operator++()
{
    m_entries.next();
    return *this;
}

} // namespace DataSets
