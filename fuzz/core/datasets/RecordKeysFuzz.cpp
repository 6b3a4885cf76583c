// Key texts on an object and an array record beside two standard maps. Input: lines, each an operation
// letter and a key.

#include <datasets/DataSets.h>

#include <QString>
#include <QStringList>
#include <cstdint>
#include <cstdlib>
#include <map>

namespace {

using namespace DataSets;

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// A record and what it should hold, under the model's own keys.
template <typename ModelKey>
struct Pair
{
    DataSet record;
    std::map<ModelKey, int> model;
    bool (*parse)(QString const& text, ModelKey& key);
    QString (*name)(ModelKey const& key);

    void apply(QChar operation, QString const& key, int value)
    {
        ModelKey modelKey{};
        bool const valid = parse(key, modelKey);
        auto const found = valid ? model.find(modelKey) : model.end();
        bool const present = found != model.end();
        require(Impl::isValidKey(*record.data, key) == valid);
        require(record.contains(key) == present);
        require(record.value<int>(key) == (present ? std::optional<int>(found->second) : std::nullopt));
        switch (operation.unicode()) {
        case u'm': {
            int moved = 0;
            require(record.moveValue(key, moved) == present);
            if (present) {
                require(moved == found->second);
                model.erase(found);
            }
            break;
        }
        case u'd': {
            bool const removes = present && !record.isArray();
            require(record.deleteValue(key) == !removes);
            if (removes) {
                model.erase(found);
            }
            break;
        }
        case u'n':
            stepFrom(key, modelKey, present);
            break;
        case u'c':
            record.clear();
            model.clear();
            break;
        default:
            record.setValue(key, value);
            if (valid) {
                model.insert_or_assign(modelKey, value);
            }
        }
        require(record.count() == static_cast<int>(model.size()));
    }

    void stepFrom(QString const& key, ModelKey const& modelKey, bool present)
    {
        DataIterator entries(record);
        require((entries.find(key) != nullptr) == present);
        if (present) {
            auto const following = model.upper_bound(modelKey);
            require((entries.next() != nullptr) == (following != model.end()));
            require(following == model.end() || entries.key == name(following->first));
        }
    }

    void walk() const
    {
        auto expected = model.begin();
        for (DataObject const& entry : record) {
            require(expected != model.end() && entry.key == name(expected->first));
            require(*entry.value() == MultiType(expected->second));
            ++expected;
        }
        require(expected == model.end());
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Pair<QString> object{DataSet::createObject(),
                         {},
                         [](QString const& text, QString& key) {
                             key = text;
                             return true;
                         },
                         [](QString const& key) { return key; }};
    Pair<int> array{DataSet::createArray(),
                    {},
                    [](QString const& text, int& key) {
                        bool ok = false;
                        key = text.toInt(&ok);
                        return ok;
                    },
                    [](int const& key) { return QString::number(key); }};
    QString const input =
        QString::fromUtf8(reinterpret_cast<char const*>(data), static_cast<qsizetype>(size));
    int value = 0;
    for (QString const& line : input.split(u'\n')) {
        QChar const operation = line.isEmpty() ? QChar(u's') : line.front();
        object.apply(operation, line.mid(1), ++value);
        array.apply(operation, line.mid(1), value);
    }
    object.walk();
    array.walk();
    return 0;
}
