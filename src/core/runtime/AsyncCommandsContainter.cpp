#include "AsyncCommandsContainter.h"

#include "TicketSource_p.h"
#include "UniqueId.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <utility>

namespace {

constinit std::atomic<TicketSource::Draw> ticketSource = &UniqueId::generateNumber;

} // namespace

unsigned long TicketSource::draw()
{
    return ticketSource.load()();
}

TicketSource::Draw TicketSource::replace(Draw source)
{
    return ticketSource.exchange(source);
}

AsyncCommandsContainter::AsyncCommandsContainter() = default;

AsyncCommandsContainter::~AsyncCommandsContainter() = default;

std::optional<unsigned long> AsyncCommandsContainter::add(std::shared_ptr<void> object)
{
    unsigned long const ticket = TicketSource::draw();
    bool const stored = m_objects.try_emplace(ticket, std::move(object)).second;
    return stored ? std::optional(ticket) : std::nullopt;
}

unsigned long AsyncCommandsContainter::getTicket() const
{
    return TicketSource::draw();
}

std::shared_ptr<void> AsyncCommandsContainter::popObject(unsigned long ticket)
{
    auto const found = m_objects.find(ticket);
    if (found == m_objects.end()) {
        return nullptr;
    }
    std::shared_ptr<void> object = std::move(found->second);
    m_objects.erase(found);
    return object;
}

std::shared_ptr<void> AsyncCommandsContainter::getObject(unsigned long ticket) const
{
    auto const found = m_objects.find(ticket);
    return found == m_objects.end() ? nullptr : found->second;
}

std::shared_ptr<void>
AsyncCommandsContainter::getObject(std::function<bool(std::shared_ptr<void> const&)> predicate) const
{
    if (!predicate && !m_objects.empty()) {
        throw std::bad_function_call();
    }
    try {
        auto const found =
            std::ranges::find_if(m_objects, [&](auto const& entry) { return predicate(entry.second); });
        return found == m_objects.end() ? nullptr : found->second;
    } catch (...) {
        // The predicate is the caller's, and so is what it throws; the answer is that nothing was found.
        return nullptr;
    }
}

// Both removals take the objects out first: an object's destructor may come back to this container.

void AsyncCommandsContainter::erase(unsigned long ticket)
{
    popObject(ticket);
}

std::vector<std::shared_ptr<void>> AsyncCommandsContainter::getAllObjects() const
{
    std::vector<std::shared_ptr<void>> objects;
    objects.reserve(m_objects.size());
    for (auto const& [ticket, object] : m_objects) {
        objects.push_back(object);
    }
    return objects;
}

void AsyncCommandsContainter::clear()
{
    std::exchange(m_objects, {});
}
