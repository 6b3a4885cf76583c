// A program for gdb to stop in, with one value of each kind.

#include <datasets/DataSets.h>

void stopHere() {}

int main()
{
    MultiType const nothing;
    MultiType const number(42);
    MultiType const text("say \"ciao\"");
    MultiType const bytes(QByteArray("\0\xFF", 2));
    DataSets::DataSet record = DataSets::DataSet::createObject();
    record.setValue(QStringLiteral("name"), QStringLiteral("Rossi"));
    record.setValue(QStringLiteral("line"), 101);
    DataSets::DataSet list = DataSets::DataSet::createArray();
    list.setValue(QStringLiteral("3"), record.data);
    DataSets::DataSet many = DataSets::DataSet::createArray();
    for (int i = 0; i < 100; ++i) {
        many.setValue(QString::number(i), i);
    }
    DataSets::DataSet const null;
    stopHere();
    return nothing == number || text == bytes || list == null;
}
