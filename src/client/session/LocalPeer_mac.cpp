#include "LocalPeer_p.h"

#include <sys/socket.h>
#include <unistd.h>

namespace Softphone::Impl {

bool isOwnUser(qintptr socket)
{
    uid_t user = 0;
    gid_t group = 0;
    return getpeereid(static_cast<int>(socket), &user, &group) == 0 && user == geteuid();
}

bool isHungUp(qintptr socket)
{
    char byte = 0;
    return recv(static_cast<int>(socket), &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

} // namespace Softphone::Impl
