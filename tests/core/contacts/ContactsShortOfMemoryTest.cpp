#include <contacts/NameDataInfo.h>
#include <contacts/PBXContactInfo.h>

#include <ChildProcess.h>
#include <QJsonArray>
#include <QJsonObject>
#include <RunTest.h>
#include <ScarceMemory.h>
#include <memory>

using Numbers = std::set<QString>;

/// What is left of a contact or a name when no allocation succeeds any more. In a test of its own, because
/// the sanitizers need memory too.
class ContactsShortOfMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersWithoutMemory_data();
    void answersWithoutMemory();
    void neverStoresHalfAContact();
    void neverTakesOverHalfAContact();
};

namespace {

/// What the checks work on, made while there is memory.
struct Given
{
    QString const first = QStringLiteral("Anna  Maria");
    QString const last = QStringLiteral("Bianchi");
    QString const joined = QStringLiteral("101;102");
    Numbers const numbers{QStringLiteral("101"), QStringLiteral("102")};
    Numbers const moreNumbers{QStringLiteral("103"), QStringLiteral("104"), QStringLiteral("105")};
    QJsonObject const json{
        {QStringLiteral("firstName"), first},
        {QStringLiteral("contacts"), QJsonArray{QJsonObject{{QStringLiteral("type"), QStringLiteral("exten")},
                                                            {QStringLiteral("value"), QStringLiteral("9")}}}},
    };
    PBXContactInfo contact;
    PBXContactInfo twin;
    PBXContactInfo withoutNumbers;
    DataSets::DataSet stored;
    NameDataInfo name;
    NameDataInfo reversed;

    Given()
    {
        for (PBXContactInfo* const one : {&contact, &twin, &withoutNumbers}) {
            one->setFirstName(first);
            one->setLastName(last);
        }
        contact.setNumbers(numbers);
        twin.setNumbers(numbers);
        stored = contact.serialize();
        name.setNameAndInitials(first, last);
        reversed.setNameAndInitials(last, first);
    }
};

using Check = bool (*)(Given& given);

bool recordIsEmpty(Given& given)
{
    return given.contact.serialize().isEmpty();
}

bool copyHasNoNumbers(Given& given)
{
    return PBXContactInfo(given.contact) == given.withoutNumbers;
}

bool assignmentChangesNothing(Given& given)
{
    PBXContactInfo target;
    target.setFirstName(given.last);
    target = given.contact;
    return target.getFirstName() == given.last && target.getLastName().isEmpty();
}

bool numbersComeBackEmpty(Given& given)
{
    return given.contact.getNumbers().empty() && given.contact.getNumber().isEmpty() &&
           PBXContactInfo::createNumberSetFromString(given.joined).empty() &&
           PBXContactInfo::createStringFromNumberSet(given.numbers).isEmpty();
}

bool numbersStay(Given& given)
{
    given.contact.setNumbers(given.moreNumbers);
    return given.contact == given.twin;
}

bool numbersFromTextAreNone(Given& given)
{
    given.contact.setNumbers(given.joined);
    return given.contact == given.withoutNumbers;
}

bool storedNumbersAreLost(Given& given)
{
    return PBXContactInfo(given.stored) == given.withoutNumbers;
}

bool directoryObjectIsEmpty(Given& given)
{
    PBXContactInfo const read(given.json);
    QString target = given.first;
    PBXContactInfo::setValueFromJson(given.json, QStringLiteral("firstName"), target);
    Numbers numbers;
    PBXContactInfo::setNumbersFromJson(given.json, numbers);
    return read == PBXContactInfo() && target.isEmpty() && numbers.empty();
}

bool labelsAreEmpty(Given&)
{
    return PBXContactInfo::referenceType2contactLabel(ContactReferenceType::Work).isEmpty() &&
           PBXContactInfo::contactLabel2referenceType(QStringLiteral("work")) == ContactReferenceType::Work;
}

bool namesStayWithoutInitials(Given& given)
{
    given.name.setNameAndInitials(given.last, given.first);
    return given.name.getFirstName(false) == given.last && given.name.getLastName(false) == given.first &&
           given.name.getInitials().isEmpty() && !(given.name == given.reversed);
}

bool composedNamesAreEmpty(Given& given)
{
    return given.name.getFullName(false).isEmpty() && given.name.getFullNameReversed(true).isEmpty() &&
           given.name.getFirstName(true).isEmpty() &&
           NameDataInfo::getInitialsFromFullName(given.first, given.last).isEmpty() &&
           NameDataInfo::buildCompositeName(given.first, given.last).isEmpty();
}

bool nothingIsPrinted(Given& given)
{
    return toString(given.contact) == nullptr && toString(given.name) == nullptr;
}

bool namesAreCopiedAndHashed(Given& given)
{
    NameDataInfo assigned;
    assigned = NameDataInfo(given.name);
    return assigned == given.name && qHash(assigned) == qHash(given.name) &&
           qHash(given.contact) == qHash(given.twin);
}

} // namespace

void ContactsShortOfMemoryTest::answersWithoutMemory_data()
{
    QTest::addColumn<Check>("check");
    QTest::newRow("record") << Check(recordIsEmpty);
    QTest::newRow("copy") << Check(copyHasNoNumbers);
    QTest::newRow("assignment") << Check(assignmentChangesNothing);
    QTest::newRow("numbers handed out") << Check(numbersComeBackEmpty);
    QTest::newRow("numbers set") << Check(numbersStay);
    QTest::newRow("numbers set from text") << Check(numbersFromTextAreNone);
    QTest::newRow("stored record") << Check(storedNumbersAreLost);
    QTest::newRow("directory object") << Check(directoryObjectIsEmpty);
    QTest::newRow("labels") << Check(labelsAreEmpty);
    QTest::newRow("name set") << Check(namesStayWithoutInitials);
    QTest::newRow("names composed") << Check(composedNamesAreEmpty);
    QTest::newRow("printed") << Check(nothingIsPrinted);
    QTest::newRow("copied and hashed") << Check(namesAreCopiedAndHashed);
}

void ContactsShortOfMemoryTest::answersWithoutMemory()
{
    QFETCH(Check, check);
    // The first call resolves symbols and fills what is kept for all calls; its answer is another one.
    Given warmUp;
    check(warmUp);
    Given given;
    QCOMPARE(inChildProcess([&] { return takeAllMemory() && check(given) ? 0 : 1; }), 0);
}

void ContactsShortOfMemoryTest::neverStoresHalfAContact()
{
    Given const given;
    bool allOrNothing = true;
    int const allocations = allocationsThatMayFail([&] {
        int const entries = given.contact.serialize().count();
        allOrNothing = allOrNothing && (entries == 0 || entries == given.stored.count());
        return entries == given.stored.count();
    });
    QVERIFY(allocations > given.stored.count());
    QVERIFY(allOrNothing);
}

void ContactsShortOfMemoryTest::neverTakesOverHalfAContact()
{
    Given const given;
    bool right = true;
    int nth = 0;
    for (bool failed = true; failed; ++nth) {
        PBXContactInfo target;
        target.setFirstName(given.last);
        target.setNumbers(given.moreNumbers);
        PBXContactInfo const before(target);
        FailingAllocation const failure(nth);
        target = given.contact;
        failed = failure.happened();
        right = right && (failed ? target == before : target == given.contact);
    }
    QVERIFY(right);
    // One for each of the two numbers, and one that was not needed.
    QCOMPARE(nth, 3);
}

int main(int argc, char** argv)
{
    return runTest<ContactsShortOfMemoryTest>(argc, argv);
}

#include "ContactsShortOfMemoryTest.moc"
