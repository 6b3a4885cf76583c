#pragma once

// What the C library of macOS declares and this system's does not.

#include <sys/types.h>

#define CLOCK_UPTIME_RAW 8

extern "C" int getpeereid(int socket, uid_t* user, gid_t* group);
