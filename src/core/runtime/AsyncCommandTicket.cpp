#include "AsyncCommandTicket.h"

AsyncCommandTicket::AsyncCommandTicket(unsigned long id)
    : m_id(id)
{
}

AsyncCommandTicket::~AsyncCommandTicket() = default;

unsigned long AsyncCommandTicket::getTicketId() const
{
    return m_id;
}

void AsyncCommandTicket::setTicketId(unsigned long id)
{
    m_id = id;
}
