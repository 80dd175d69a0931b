// What the calls on a camera are about that an observer is told of.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

namespace companion
{

inline bool isOnMemory(const KX_CallEvent& event)
{
    return event.operation == KX_OP_READ_MEMORY || event.operation == KX_OP_WRITE_MEMORY;
}

// Of a feature; commands have one in so far as they are carried out.
inline bool isOnValue(const KX_CallEvent& event)
{
    return event.operation >= KX_OP_GET_BOOL && event.operation <= KX_OP_EXECUTE;
}

inline bool isWrite(const KX_CallEvent& event)
{
    return (event.operation >= KX_OP_SET_BOOL && event.operation <= KX_OP_EXECUTE) ||
           event.operation == KX_OP_WRITE_MEMORY;
}

} // namespace companion
