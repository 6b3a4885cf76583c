#include "LocalPeer_p.h"

#include <sys/socket.h>
#include <unistd.h>

namespace Softphone::Impl {

bool isOwnUser(qintptr socket)
{
    ucred peer = {};
    socklen_t size = sizeof(peer);
    return getsockopt(static_cast<int>(socket), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == geteuid();
}

bool isHungUp(qintptr socket)
{
    char byte = 0;
    return recv(static_cast<int>(socket), &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

} // namespace Softphone::Impl
