#pragma once

#include <softphonecore_export.h>

/// Where ticket numbers come from. Tests put a source of their own here, to meet what chance would not show
/// them in years; it is exported for them and not installed.
namespace TicketSource {

using Draw = unsigned long (*)();

/// Draws one number; UniqueId::generateNumber() unless replaced.
unsigned long draw();

/// Draws from \a source from now on, and answers what was drawn from before. Any thread.
SOFTPHONECORE_EXPORT Draw replace(Draw source);

} // namespace TicketSource
