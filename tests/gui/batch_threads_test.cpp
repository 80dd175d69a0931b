// A batch for which the system gives no threads.
#include "BatchFixture.h"

#include <atomic>
#include <cerrno>

#include <dlfcn.h>
#include <pthread.h>

namespace
{

std::atomic<bool> g_areThereNone{false};

} // namespace

// In the place of the system's own.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                              void* argument)
{
    if (g_areThereNone)
        return EAGAIN;
    static const auto next = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, body, argument);
}

namespace
{

using BatchThreads = BatchFixture;

} // namespace

// The window would wait for ever, and take no click meanwhile.
TEST_F(BatchThreads, TheBatchEndsWhereNoneCanBeStarted)
{
    open();
    readyCameras(2);
    g_areThereNone = true;
    runExport(folder.path());
    g_areThereNone = false;
    EXPECT_EQ(counts(), (QStringList{"0", "0", "2"}));
    EXPECT_TRUE(window->isEnabled());
    runExportTogether(2, folder.path());
    EXPECT_EQ(counts(), (QStringList{"0", "2", "0"}));
}
