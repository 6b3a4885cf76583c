#pragma once

#include <softphonecore_export.h>

/// The ticket of one pending command, as AsyncCommandsContainter::add() gave it out.
class SOFTPHONECORE_EXPORT AsyncCommandTicket
{
public:
    /// A ticket with the number \a id.
    AsyncCommandTicket(unsigned long id);
    /// Copies the number.
    AsyncCommandTicket(AsyncCommandTicket const&) = default;
    /// Copies the number.
    AsyncCommandTicket& operator=(AsyncCommandTicket const&) = default;
    virtual ~AsyncCommandTicket();

    /// The ticket's number.
    [[nodiscard]] unsigned long getTicketId() const;

    /// Gives the ticket the number \a id.
    void setTicketId(unsigned long id);

private:
    unsigned long m_id;
};
