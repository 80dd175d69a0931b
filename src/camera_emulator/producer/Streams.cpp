// The exported functions of image streams: an emulated camera has none. Consumers that load the whole
// interface want them to be there.
#include "camera_emulator/producer/State.h"

using namespace producer;

PRODUCER_EXPORT DevGetNumDataStreams(Handle, uint32_t* count)
{
    *count = 0;
    return Success;
}

#define NO_STREAM(name)                                                                                      \
    PRODUCER_EXPORT name(void)                                                                               \
    {                                                                                                        \
        return fail(ErrNotImplemented, "there are no streams");                                              \
    }
NO_STREAM(DevGetDataStreamID)
NO_STREAM(DevOpenDataStream)
NO_STREAM(DSAllocAndAnnounceBuffer)
NO_STREAM(DSAnnounceBuffer)
NO_STREAM(DSClose)
NO_STREAM(DSFlushQueue)
NO_STREAM(DSGetBufferChunkData)
NO_STREAM(DSGetBufferID)
NO_STREAM(DSGetBufferInfo)
NO_STREAM(DSGetInfo)
NO_STREAM(DSQueueBuffer)
NO_STREAM(DSRevokeBuffer)
NO_STREAM(DSStartAcquisition)
NO_STREAM(DSStopAcquisition)
#undef NO_STREAM
