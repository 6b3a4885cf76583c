#pragma once

#include <QtGlobal>

namespace Softphone::Impl {

/// Whether the process at the other end of the local \a socket runs as the user of this one. The system
/// answers, so that neither end can pretend.
[[nodiscard]] bool isOwnUser(qintptr socket);

/// Whether the other end of the local \a socket was closed, as far as the system knows at this moment. Only
/// for a socket from which everything was read.
[[nodiscard]] bool isHungUp(qintptr socket);

} // namespace Softphone::Impl
