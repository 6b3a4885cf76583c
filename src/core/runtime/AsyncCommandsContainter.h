#pragma once

#include <softphonecore_export.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

/// The commands that wait for their reply, each under a ticket.
///
/// The reply carries the ticket, and popObject() gives back what belongs to it. The objects may be of any
/// type, also of several; the caller knows which, and casts with std::static_pointer_cast.
///
/// Nothing is locked: a container is used from one thread at a time.
///
/// Example:
/// \code
/// AsyncCommandsContainter pending;
/// std::optional<unsigned long> const ticket = pending.add(std::make_shared<Transfer>(call));
/// // ... when the reply has come:
/// auto const transfer = std::static_pointer_cast<Transfer>(pending.popObject(*ticket));
/// \endcode
class SOFTPHONECORE_EXPORT AsyncCommandsContainter
{
public:
    AsyncCommandsContainter();
    virtual ~AsyncCommandsContainter();

    /// Stores \a object under a random ticket of 32 bits.
    ///
    /// \return the ticket, or nothing when the number drawn is taken already; the object is then not stored,
    ///         and the caller may try again
    std::optional<unsigned long> add(std::shared_ptr<void> object);

    /// A random number such as add() draws. It is not reserved: add() may give it out later.
    [[nodiscard]] unsigned long getTicket() const;

    /// Takes out the object of \a ticket; a null pointer when there is none.
    std::shared_ptr<void> popObject(unsigned long ticket);

    /// The object of \a ticket, which stays stored; a null pointer when there is none.
    [[nodiscard]] std::shared_ptr<void> getObject(unsigned long ticket) const;

    /// The first object, by ascending ticket, that \a predicate accepts; it stays stored.
    ///
    /// \param predicate  is asked for one object after the other until it answers true; it must not change
    ///                   the container
    /// \return the object; a null pointer when none is accepted, or when \a predicate throws
    /// \throws std::bad_function_call when \a predicate is empty and there is an object to ask about
    [[nodiscard]] std::shared_ptr<void>
    getObject(std::function<bool(std::shared_ptr<void> const&)> predicate) const;

    /// Removes the object of \a ticket, if there is one.
    void erase(unsigned long ticket);

    /// All objects, by ascending ticket.
    [[nodiscard]] std::vector<std::shared_ptr<void>> getAllObjects() const;

    /// Removes all objects.
    void clear();

private:
    std::map<unsigned long, std::shared_ptr<void>> m_objects;
};
