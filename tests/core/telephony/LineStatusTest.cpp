#include <telephony/LineStatus.h>

#include <QDebug>
#include <QSet>
#include <RunTest.h>
#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <type_traits>
#include <unordered_set>

using Status = LineStatus::Status;

namespace {

struct Predicate
{
    char const* name;
    bool (LineStatus::*test)() const;
    std::set<int> accepted;
};

Predicate const predicates[] = {
    {"isFree", &LineStatus::isFree, {0}},
    {"isConnecting", &LineStatus::isConnecting, {1}},
    {"isRinging", &LineStatus::isRinging, {2}},
    {"isIncoming", &LineStatus::isIncoming, {3, 4}},
    {"isStrictlyIncomingAsWaitEstablished", &LineStatus::isStrictlyIncomingAsWaitEstablished, {4}},
    {"isBusy", &LineStatus::isBusy, {5}},
    {"isActive", &LineStatus::isActive, {6, 7}},
    {"isStrictlyActive", &LineStatus::isStrictlyActive, {6}},
    {"isActiveAsSessionProgress", &LineStatus::isActiveAsSessionProgress, {7}},
    {"isStrictlyActiveAsSessionProgress", &LineStatus::isStrictlyActiveAsSessionProgress, {7}},
    {"isTerminated", &LineStatus::isTerminated, {8, 9, 10, 11}},
    {"isStrictlyTerminatedAsBusy", &LineStatus::isStrictlyTerminatedAsBusy, {9}},
    {"isStrictlyTerminatedAsAnsweredElsewhere", &LineStatus::isStrictlyTerminatedAsAnsweredElsewhere, {10}},
    {"isStrictlyTerminatedAsTemporaryUnavailable",
     &LineStatus::isStrictlyTerminatedAsTemporaryUnavailable,
     {11}},
    {"isError", &LineStatus::isError, {12}},
};

} // namespace

class LineStatusTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void createsEachStatus_data();
    void createsEachStatus();
    void answersPredicates_data();
    void answersPredicates();
    void listsAllStatuses();
    void keepsNumbersOutsideTheTable_data();
    void keepsNumbersOutsideTheTable();
    void ordersByNumber();
    void comparesExactly();
    void hashesLikeItCompares();
    void printsItself();
};

void LineStatusTest::createsEachStatus_data()
{
    QTest::addColumn<std::function<LineStatus()>>("create");
    QTest::addColumn<Status>("status");
    QTest::addColumn<int>("number");
    auto const row = [](char const* name, LineStatus (*create)(), Status status, int number) {
        QTest::newRow(name) << std::function(create) << status << number;
    };
    row("Free", &LineStatus::createFree, Status::Free, 0);
    row("Connecting", &LineStatus::createConnecting, Status::Connecting, 1);
    row("Ringing", &LineStatus::createRinging, Status::Ringing, 2);
    row("Incoming", &LineStatus::createIncoming, Status::Incoming, 3);
    row("IncomingAsWaitEstablished", &LineStatus::createIncomingAsWaitEstablished,
        Status::IncomingAsWaitEstablished, 4);
    row("Busy", &LineStatus::createBusy, Status::Busy, 5);
    row("Active", &LineStatus::createActive, Status::Active, 6);
    row("ActiveAsSessionProgress", &LineStatus::createActiveAsSessionProgress,
        Status::ActiveAsSessionProgress, 7);
    row("Terminated", &LineStatus::createTerminated, Status::Terminated, 8);
    row("TerminatedAsBusy", &LineStatus::createTerminatedAsBusy, Status::TerminatedAsBusy, 9);
    row("TerminatedAsAnsweredElsewhere", &LineStatus::createTerminatedAsAnsweredElsewhere,
        Status::TerminatedAsAnsweredElsewhere, 10);
    row("TerminatedAsTemporaryUnavailable", &LineStatus::createTerminatedAsTemporaryUnavailable,
        Status::TerminatedAsTemporaryUnavailable, 11);
    row("Error", &LineStatus::createError, Status::Error, 12);
}

void LineStatusTest::createsEachStatus()
{
    QFETCH(std::function<LineStatus()>, create);
    QFETCH(Status, status);
    QFETCH(int, number);
    LineStatus const line = create();
    QCOMPARE(line, LineStatus(status));
    QCOMPARE(line.serialize(), number);
    QCOMPARE(LineStatus::deserialize(number), line);
    QCOMPARE(line.toString(), QString::fromUtf8(QTest::currentDataTag()));
}

void LineStatusTest::answersPredicates_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (Predicate const& predicate : predicates) {
        QTest::newRow(predicate.name) << index++;
    }
}

void LineStatusTest::answersPredicates()
{
    QFETCH(int, index);
    Predicate const& predicate = predicates[index];
    for (int value = -300; value <= 300; ++value) {
        QCOMPARE((LineStatus::deserialize(value).*predicate.test)(), predicate.accepted.contains(value));
    }
    for (int value : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        QVERIFY(!(LineStatus::deserialize(value).*predicate.test)());
    }
}

void LineStatusTest::listsAllStatuses()
{
    std::vector<Status> const all = LineStatus::getAllStatuses();
    QCOMPARE(all.size(), std::size_t{13});
    for (int value = 0; value < 13; ++value) {
        QCOMPARE(static_cast<int>(all[static_cast<std::size_t>(value)]), value);
    }
}

void LineStatusTest::keepsNumbersOutsideTheTable_data()
{
    QTest::addColumn<int>("value");
    QTest::newRow("first behind the last") << 13;
    QTest::newRow("negative") << -1;
    QTest::newRow("beyond a byte") << 256;
    QTest::newRow("highest") << std::numeric_limits<int>::max();
    QTest::newRow("lowest") << std::numeric_limits<int>::min();
}

void LineStatusTest::keepsNumbersOutsideTheTable()
{
    QFETCH(int, value);
    LineStatus const line = LineStatus::deserialize(value);
    QCOMPARE(line.serialize(), value);
    QCOMPARE(line.toString(), QString());
    QCOMPARE(line, LineStatus(static_cast<Status>(value)));
}

void LineStatusTest::ordersByNumber()
{
    QVERIFY(LineStatus::deserialize(-1) < LineStatus::createFree());
    QVERIFY(LineStatus::createError() < LineStatus::deserialize(13));
    QVERIFY(!(LineStatus::createFree() < LineStatus::createFree()));
    std::set<LineStatus> ordered;
    for (int value = 12; value >= 0; --value) {
        ordered.insert(LineStatus::deserialize(value));
    }
    int expected = 0;
    for (LineStatus const& line : ordered) {
        QCOMPARE(line.serialize(), expected++);
    }
    QCOMPARE(expected, 13);
}

void LineStatusTest::comparesExactly()
{
    QVERIFY(LineStatus::createTerminatedAsBusy().isTerminated());
    QVERIFY(LineStatus::createTerminatedAsBusy() != LineStatus::createTerminated());
    QVERIFY(LineStatus::createActive() == Status::Active);
    static_assert(std::is_trivially_copyable_v<LineStatus>);
}

void LineStatusTest::hashesLikeItCompares()
{
    QSet<LineStatus> qtSet;
    std::unordered_set<LineStatus> standardSet;
    for (int round = 0; round < 2; ++round) {
        for (Status const status : LineStatus::getAllStatuses()) {
            qtSet.insert(status);
            standardSet.insert(status);
        }
    }
    QCOMPARE(qtSet.size(), 13);
    QCOMPARE(standardSet.size(), std::size_t{13});
    QVERIFY(qHash(LineStatus::createBusy(), 1) != qHash(LineStatus::createBusy(), 2));
}

void LineStatusTest::printsItself()
{
    QString text;
    QDebug(&text).nospace() << LineStatus::createRinging() << QStringLiteral("x");
    QCOMPARE(text, QStringLiteral("LineStatus(Ringing)\"x\""));
    std::unique_ptr<char[]> const shown(QTest::toString(LineStatus::deserialize(13)));
    QCOMPARE(shown.get(), "LineStatus(13)");
    std::unique_ptr<char[]> const shownByComparison(toString(LineStatus::createBusy()));
    QCOMPARE(shownByComparison.get(), "LineStatus(Busy)");
    QCOMPARE(QMetaType::fromType<LineStatus>().name(), "LineStatus");
}

int main(int argc, char** argv)
{
    return runTest<LineStatusTest>(argc, argv);
}

#include "LineStatusTest.moc"
