// A producer that lacks two of the functions that no consumer can do without, and all that are optional.
#include "gentl/GenTl.h"

#define POOR(name)                                                                                           \
    extern "C" __attribute__((visibility("default"))) gentl::Error name()                                    \
    {                                                                                                        \
        return gentl::ErrNotImplemented;                                                                     \
    }
POOR(GCInitLib)
POOR(GCCloseLib)
POOR(GCGetLastError)
POOR(GCReadPort)
POOR(TLOpen)
POOR(TLClose)
POOR(TLGetInfo)
POOR(TLUpdateInterfaceList)
POOR(TLGetNumInterfaces)
POOR(TLGetInterfaceID)
POOR(TLGetInterfaceInfo)
POOR(TLOpenInterface)
POOR(IFClose)
POOR(IFUpdateDeviceList)
POOR(IFGetNumDevices)
POOR(IFGetDeviceID)
POOR(IFGetDeviceInfo)
POOR(IFOpenDevice)
POOR(DevClose)
