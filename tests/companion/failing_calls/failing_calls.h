/* The kinds of calls that can fail (failing_calls.c). */
#ifndef FAILING_CALLS_H
#define FAILING_CALLS_H

#ifdef __cplusplus
extern "C" {
#endif

enum Kind
{
    OPEN,
    WRITE,
    FSYNC,
    RENAME,
    LINK,
    MKDIR,
    UNLINK,
    SOCKET,
    BIND,
    CONNECT,
    SEND,
    THREAD,
    NEW,
    ALLOCATE,
    QT_ALLOCATE,
    KINDS
};

/* Whether this call is the one; errno is set then. */
int failing_calls_fails(enum Kind kind);

#ifdef __cplusplus
}
#endif

#endif
