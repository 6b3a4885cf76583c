#include <datasets/DataSets.h>

#include <RunTest.h>

using DataSets::DataIterator;
using DataSets::DataObject;
using DataSets::DataSet;
using namespace DataSets::Impl;

namespace {

QStringList keysOf(DataSet const& set)
{
    QStringList keys;
    DataIterator entries(set);
    while (DataObject const* entry = entries.next()) {
        keys << entry->key;
    }
    return keys;
}

} // namespace

class DataSetsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void walksInKeyOrder();
    void endsOnAnEmptyKey();
};

void DataSetsTest::walksInKeyOrder()
{
    DataSet object = DataSet::createObject();
    for (char const* key : {"b", "a", "B"}) {
        object.setValue(QString::fromLatin1(key), 1);
    }
    QCOMPARE(keysOf(object), QStringList({QStringLiteral("B"), QStringLiteral("a"), QStringLiteral("b")}));

    DataSet array = DataSet::createArray();
    array.setValue(QStringLiteral("10"), 1);
    array.setValue(QStringLiteral("2"), 1);
    QCOMPARE(keysOf(array), QStringList({QStringLiteral("2"), QStringLiteral("10")}));
}

void DataSetsTest::endsOnAnEmptyKey()
{
    DataSet set = DataSet::createObject();
    set.setValue(QString(), 1);
    set.setValue(QStringLiteral("a"), 2);
    QCOMPARE(keysOf(set), QStringList({QString(), QStringLiteral("a")}));
}

int main(int argc, char** argv)
{
    return runTest<DataSetsTest>(argc, argv);
}

#include "DataSetsTest.moc"
