#include <runtime/AsyncCommandTicket.h>
#include <runtime/AsyncCommandsContainter.h>
#include <runtime/TicketSource_p.h>

#include <RunTest.h>
#include <algorithm>
#include <limits>
#include <map>
#include <random>
#include <stdexcept>
#include <type_traits>

namespace {

/// Makes the container draw the given numbers, and counting numbers from 1000 after them.
class ScriptedTickets
{
public:
    explicit ScriptedTickets(std::vector<unsigned long> numbers)
        : m_before(TicketSource::replace(&draw))
    {
        s_numbers = std::move(numbers);
        s_drawn = 0;
    }
    ~ScriptedTickets() { TicketSource::replace(m_before); }

    static std::size_t drawn() { return s_drawn; }

private:
    static unsigned long draw()
    {
        std::size_t const index = s_drawn++;
        return index < s_numbers.size() ? s_numbers[index] : 1000 + index;
    }

    static inline std::vector<unsigned long> s_numbers;
    static inline std::size_t s_drawn = 0;
    TicketSource::Draw m_before;
};

std::shared_ptr<void> number(int value)
{
    return std::make_shared<int>(value);
}

int valueOf(std::shared_ptr<void> const& object)
{
    return object ? *std::static_pointer_cast<int>(object) : -1;
}

std::vector<int> valuesOf(AsyncCommandsContainter const& container)
{
    std::vector<int> values;
    for (std::shared_ptr<void> const& object : container.getAllObjects()) {
        values.push_back(valueOf(object));
    }
    return values;
}

} // namespace

class AsyncCommandsContainterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storesAnyTypeUnderATicket();
    void drawsTicketsOf32Bits();
    void collisionStoresNothing();
    void getTicketReservesNothing();
    void popsOnce();
    void getsAsOftenAsAsked();
    void findsTheFirstByTicket();
    void emptyPredicateThrows();
    void throwingPredicateFindsNothing();
    void erases();
    void listsByTicket();
    void clears();
    void destructionReleasesTheObjects();
    void storesANullPointer();
    void objectsMayComeBackWhileRemoved_data();
    void objectsMayComeBackWhileRemoved();
    void agreesWithAPlainMap();
    void ticketHoldsItsNumber();
};

void AsyncCommandsContainterTest::storesAnyTypeUnderATicket()
{
    AsyncCommandsContainter container;
    auto const text = std::make_shared<QString>(QStringLiteral("call"));
    std::optional<unsigned long> const first = container.add(text);
    std::optional<unsigned long> const second = container.add(number(7));
    QVERIFY(first.has_value());
    QVERIFY(second.has_value());
    QCOMPARE(std::static_pointer_cast<QString>(container.getObject(*first)), text);
    QCOMPARE(valueOf(container.getObject(*second)), 7);
    QCOMPARE(text.use_count(), 2);
}

void AsyncCommandsContainterTest::drawsTicketsOf32Bits()
{
    AsyncCommandsContainter container;
    for (int count = 0; count < 1000; ++count) {
        std::optional<unsigned long> const ticket = container.add(number(count));
        QVERIFY(!ticket || *ticket <= std::numeric_limits<quint32>::max());
        QVERIFY(container.getTicket() <= std::numeric_limits<quint32>::max());
    }
    QVERIFY(container.getTicket() != container.getTicket() || container.getTicket() != container.getTicket());
}

void AsyncCommandsContainterTest::collisionStoresNothing()
{
    ScriptedTickets const tickets({5, 5, 5, 6});
    AsyncCommandsContainter container;
    auto const refused = std::make_shared<int>(2);
    QCOMPARE(container.add(number(1)), std::optional(5UL));
    QCOMPARE(container.add(refused), std::nullopt);
    QCOMPARE(ScriptedTickets::drawn(), std::size_t(2));
    QCOMPARE(refused.use_count(), 1L);
    QCOMPARE(valuesOf(container), std::vector<int>{1});
    QCOMPARE(container.add(number(3)), std::nullopt);
    QCOMPARE(container.add(number(4)), std::optional(6UL));
    QCOMPARE(valuesOf(container), (std::vector<int>{1, 4}));
}

void AsyncCommandsContainterTest::getTicketReservesNothing()
{
    ScriptedTickets const tickets({5, 5, 7});
    AsyncCommandsContainter container;
    QCOMPARE(container.getTicket(), 5UL);
    QVERIFY(container.getAllObjects().empty());
    QCOMPARE(container.add(number(1)), std::optional(5UL));
    QCOMPARE(container.getTicket(), 7UL);
}

void AsyncCommandsContainterTest::popsOnce()
{
    ScriptedTickets const tickets({5, 3});
    AsyncCommandsContainter container;
    container.add(number(1));
    container.add(number(2));
    QVERIFY(container.popObject(4) == nullptr);
    QCOMPARE(valuesOf(container), (std::vector<int>{2, 1}));
    std::shared_ptr<void> const object = container.popObject(5);
    QCOMPARE(valueOf(object), 1);
    QCOMPARE(object.use_count(), 1L);
    QVERIFY(container.popObject(5) == nullptr);
    QCOMPARE(valuesOf(container), std::vector<int>{2});
}

void AsyncCommandsContainterTest::getsAsOftenAsAsked()
{
    ScriptedTickets const tickets({5});
    AsyncCommandsContainter container;
    container.add(number(1));
    QCOMPARE(valueOf(container.getObject(5)), 1);
    QCOMPARE(valueOf(container.getObject(5)), 1);
    QVERIFY(container.getObject(4) == nullptr);
    QVERIFY(container.getObject(std::numeric_limits<unsigned long>::max()) == nullptr);
}

void AsyncCommandsContainterTest::findsTheFirstByTicket()
{
    ScriptedTickets const tickets({30, 10, 20});
    AsyncCommandsContainter container;
    for (int value : {3, 1, 2}) {
        container.add(number(value));
    }
    std::vector<int> asked;
    auto const atLeast = [&](int least) {
        asked.clear();
        return container.getObject([&asked, least](std::shared_ptr<void> const& object) {
            asked.push_back(valueOf(object));
            return valueOf(object) >= least;
        });
    };
    QCOMPARE(valueOf(atLeast(2)), 2);
    QCOMPARE(asked, (std::vector<int>{1, 2}));
    QVERIFY(atLeast(4) == nullptr);
    QCOMPARE(asked, (std::vector<int>{1, 2, 3}));
    QCOMPARE(valuesOf(container), (std::vector<int>{1, 2, 3}));
}

void AsyncCommandsContainterTest::emptyPredicateThrows()
{
    std::function<bool(std::shared_ptr<void> const&)> const empty;
    AsyncCommandsContainter container;
    QVERIFY(container.getObject(empty) == nullptr);
    container.add(number(1));
    QVERIFY_THROWS_EXCEPTION(std::bad_function_call, static_cast<void>(container.getObject(empty)));
    QCOMPARE(valuesOf(container), std::vector<int>{1});
}

void AsyncCommandsContainterTest::throwingPredicateFindsNothing()
{
    AsyncCommandsContainter container;
    container.add(number(1));
    auto const thrower = [](std::shared_ptr<void> const&) -> bool {
        throw std::runtime_error("the caller's own");
    };
    QVERIFY(container.getObject(thrower) == nullptr);
    QCOMPARE(valuesOf(container), std::vector<int>{1});
}

void AsyncCommandsContainterTest::erases()
{
    ScriptedTickets const tickets({5, 3});
    AsyncCommandsContainter container;
    container.add(number(1));
    container.add(number(2));
    container.erase(4);
    QCOMPARE(valuesOf(container), (std::vector<int>{2, 1}));
    container.erase(3);
    container.erase(3);
    QCOMPARE(valuesOf(container), std::vector<int>{1});
}

void AsyncCommandsContainterTest::listsByTicket()
{
    ScriptedTickets const tickets({std::numeric_limits<quint32>::max(), 0, 0x80000000UL, 1});
    AsyncCommandsContainter container;
    QCOMPARE(container.getAllObjects(), std::vector<std::shared_ptr<void>>());
    for (int value : {4, 1, 3, 2}) {
        container.add(number(value));
    }
    QCOMPARE(valuesOf(container), (std::vector<int>{1, 2, 3, 4}));
    QCOMPARE(container.getAllObjects().capacity(), std::size_t(4));
}

void AsyncCommandsContainterTest::clears()
{
    AsyncCommandsContainter container;
    std::weak_ptr<void> object;
    {
        std::shared_ptr<void> const stored = number(1);
        object = stored;
        container.add(stored);
    }
    QVERIFY(!object.expired());
    container.clear();
    QVERIFY(object.expired());
    QVERIFY(container.getAllObjects().empty());
    container.clear();
    QVERIFY(container.add(number(2)).has_value());
}

void AsyncCommandsContainterTest::destructionReleasesTheObjects()
{
    std::weak_ptr<void> object;
    {
        AsyncCommandsContainter container;
        std::shared_ptr<void> stored = number(1);
        object = stored;
        container.add(std::move(stored));
        QVERIFY(!object.expired());
    }
    QVERIFY(object.expired());
}

void AsyncCommandsContainterTest::storesANullPointer()
{
    ScriptedTickets const tickets({5, 5});
    AsyncCommandsContainter container;
    QCOMPARE(container.add(nullptr), std::optional(5UL));
    QCOMPARE(container.add(number(1)), std::nullopt);
    QCOMPARE(container.getAllObjects().size(), std::size_t(1));
    QVERIFY(container.popObject(5) == nullptr);
    QVERIFY(container.getAllObjects().empty());
}

void AsyncCommandsContainterTest::objectsMayComeBackWhileRemoved_data()
{
    QTest::addColumn<bool>("all");
    QTest::newRow("one erased") << false;
    QTest::newRow("all cleared") << true;
}

void AsyncCommandsContainterTest::objectsMayComeBackWhileRemoved()
{
    QFETCH(bool, all);
    ScriptedTickets const tickets({1, 2, 3});
    AsyncCommandsContainter container;
    int left = -1;
    auto const removesTheOther = [&] {
        container.erase(2);
        container.add(number(9));
        left = static_cast<int>(container.getAllObjects().size());
    };
    container.add(std::shared_ptr<void>(new int(1), [&](void* object) {
        delete static_cast<int*>(object);
        removesTheOther();
    }));
    container.add(number(2));
    if (all) {
        container.clear();
    } else {
        container.erase(1);
    }
    QCOMPARE(left, 1);
    QCOMPARE(valuesOf(container), std::vector<int>{9});
}

void AsyncCommandsContainterTest::agreesWithAPlainMap()
{
    std::mt19937 random(1);
    std::vector<unsigned long> numbers(5000);
    std::generate(numbers.begin(), numbers.end(), [&] { return random() % 200; });
    ScriptedTickets const tickets(numbers);
    AsyncCommandsContainter container;
    std::map<unsigned long, int> model;
    for (int step = 0; step < 5000; ++step) {
        unsigned long const ticket = random() % 200;
        switch (random() % 4) {
        case 0:
        case 1: {
            unsigned long const next = numbers.at(ScriptedTickets::drawn());
            bool const stored = model.try_emplace(next, step).second;
            QCOMPARE(container.add(number(step)), stored ? std::optional(next) : std::nullopt);
            break;
        }
        case 2:
            QCOMPARE(valueOf(container.getObject(ticket)), model.count(ticket) ? model.at(ticket) : -1);
            break;
        default:
            QCOMPARE(valueOf(container.popObject(ticket)), model.count(ticket) ? model.at(ticket) : -1);
            model.erase(ticket);
        }
        std::vector<int> values;
        for (auto const& entry : model) {
            values.push_back(entry.second);
        }
        QCOMPARE(valuesOf(container), values);
    }
}

void AsyncCommandsContainterTest::ticketHoldsItsNumber()
{
    AsyncCommandTicket ticket(5);
    QCOMPARE(ticket.getTicketId(), 5UL);
    ticket.setTicketId(std::numeric_limits<unsigned long>::max());
    QCOMPARE(ticket.getTicketId(), std::numeric_limits<unsigned long>::max());
    AsyncCommandTicket const copy = ticket;
    QCOMPARE(copy.getTicketId(), ticket.getTicketId());
    QVERIFY(std::has_virtual_destructor_v<AsyncCommandTicket>);
    QVERIFY(std::has_virtual_destructor_v<AsyncCommandsContainter>);
}

int main(int argc, char** argv)
{
    return runTest<AsyncCommandsContainterTest>(argc, argv);
}

#include "AsyncCommandsContainterTest.moc"
