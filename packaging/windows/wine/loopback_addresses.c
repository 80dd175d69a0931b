/* Lets several emulated cameras have an address of 127.0.0.0/8 each under Wine.
 *
 * Wine's server asks getifaddrs() which interface a datagram socket's address belongs to, and binds the socket to all
 * addresses when it finds one: then the second camera's port is taken, and answers come from 127.0.0.1. Where the
 * question fails, it binds to the address as it was told. So it fails, in the server alone.
 *
 * To be preloaded into the first Wine program of a Wine installation: that one starts the server. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <ifaddrs.h>
#include <string.h>

typedef int (*Function)(struct ifaddrs**);

int getifaddrs(struct ifaddrs** list)
{
    static const char server[] = "wineserver";
    if (strncmp(program_invocation_short_name, server, sizeof server - 1) != 0)
        return ((Function)dlsym(RTLD_NEXT, "getifaddrs"))(list);
    errno = ENOSYS;
    return -1;
}
