// What reading and writing settings needs of the GenTL interface (GenICam GenTL, "Software Interface"): the
// numbers and the functions of the standard, versions 1.0 to 1.6, under names of our own.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gentl
{

// "Used Data Types"
using Handle = void*; // a module, a port or an event
using Bool8 = uint8_t;

// "Error Handling": what every function gives back. Producers add numbers of their own below -10000.
using Error = int32_t;
enum : Error
{
    Success = 0,
    ErrError = -1001,
    ErrNotInitialized = -1002,
    ErrNotImplemented = -1003,
    ErrResourceInUse = -1004,
    ErrAccessDenied = -1005,
    ErrInvalidHandle = -1006,
    ErrInvalidId = -1007,
    ErrNoData = -1008,
    ErrInvalidParameter = -1009,
    ErrIo = -1010,
    ErrTimeout = -1011,
    ErrAbort = -1012,
    ErrNotAvailable = -1014,
    ErrInvalidAddress = -1015,
    ErrBufferTooSmall = -1016,
    ErrInvalidIndex = -1017,
    ErrInvalidValue = -1019,
    ErrBusy = -1022
};

// "Information Data Types": what a buffer of an information function was filled with.
enum DataType : int32_t
{
    TypeUnknown = 0,
    TypeString = 1,
    TypeInt32 = 5,
    TypeUint32 = 6,
    TypeUint64 = 8,
    TypeBool8 = 11,
    TypeSize = 12,
    TypeBuffer = 13
};

// "Library and System Enumerations"
enum SystemInfo : int32_t
{
    SystemId = 0,
    SystemVendor = 1,
    SystemModel = 2,
    SystemVersion = 3,
    SystemType = 4,
    SystemFileName = 5,
    SystemPath = 6,
    SystemDisplayName = 7,
    SystemEncoding = 8,
    SystemVersionMajor = 9,
    SystemVersionMinor = 10
};

// "Interface Enumerations"
enum InterfaceInfo : int32_t
{
    InterfaceId = 0,
    InterfaceDisplayName = 1,
    InterfaceType = 2
};

// "Device Enumerations"
enum DeviceInfo : int32_t
{
    DeviceId = 0,
    DeviceVendor = 1,
    DeviceModel = 2,
    DeviceType = 3,
    DeviceDisplayName = 4,
    DeviceAccessStatus = 5,
    DeviceUserName = 6,
    DeviceSerialNumber = 7,
    DeviceVersion = 8
};
enum AccessStatus : int32_t
{
    StatusUnknown = 0,
    StatusReadWrite = 1, // free
    StatusReadOnly = 2,  // somebody else has control
    StatusNoAccess = 3,  // seen, and out of reach
    StatusBusy = 4,      // another process has it
    StatusOpenReadWrite = 5,
    StatusOpenReadOnly = 6
};
enum AccessFlags : int32_t
{
    AccessReadOnly = 2,
    AccessControl = 3,
    AccessExclusive = 4
};

// "Port Enumerations"
enum UrlInfo : int32_t
{
    UrlText = 0,
    UrlSchemaMajor = 1,
    UrlSchemaMinor = 2,
    UrlFileMajor = 3,
    UrlFileMinor = 4,
    UrlFileSubMinor = 5,
    UrlAddress = 7,
    UrlSize = 8,
    UrlScheme = 9, // 0: in the module's own memory
    UrlFileName = 10
};
enum PortInfo : int32_t
{
    PortId = 0,
    PortVendor = 1,
    PortModel = 2,
    PortType = 3,
    PortModule = 4,
    PortLittleEndian = 5,
    PortBigEndian = 6,
    PortReadable = 7,
    PortWritable = 8,
    PortNotAvailable = 9,
    PortNotImplemented = 10,
    PortVersion = 11,
    PortName = 12
};

// "Signaling Enumerations"
enum EventType : int32_t
{
    EventError = 0
};
enum EventInfo : int32_t
{
    EventTypeInfo = 0
};
enum EventDataInfo : int32_t
{
    EventDataId = 0,
    EventDataValue = 1
};

// The functions, X(name, parameters, needed): those that settings cannot be reached without, and those that a
// producer may lack (they came after GenTL 1.0, or tell of losses only).
// clang-format off
#define GENTL_FUNCTIONS(X)                                                                                          \
    /* "Library Functions" */                                                                                       \
    X(GCInitLib, (void), true)                                                                                      \
    X(GCCloseLib, (void), true)                                                                                     \
    X(GCGetLastError, (Error * code, char* text, size_t* size), true)                                               \
    /* "Port Functions" */                                                                                          \
    X(GCReadPort, (Handle port, uint64_t address, void* data, size_t* size), true)                                  \
    X(GCWritePort, (Handle port, uint64_t address, const void* data, size_t* size), true)                           \
    X(GCGetPortURL, (Handle port, char* url, size_t* size), false)                                                  \
    X(GCGetNumPortURLs, (Handle port, uint32_t* count), false)                                                      \
    X(GCGetPortURLInfo, (Handle port, uint32_t index, int32_t what, int32_t* type, void* data, size_t* size), false) \
    X(GCGetPortInfo, (Handle port, int32_t what, int32_t* type, void* data, size_t* size), false)                   \
    X(GCReadPortStacked, (Handle port, StackEntry * entries, size_t* count), false)                                 \
    /* "Signaling Functions" */                                                                                     \
    X(GCRegisterEvent, (Handle module, int32_t event, Handle* handle), false)                                       \
    X(GCUnregisterEvent, (Handle module, int32_t event), false)                                                     \
    X(EventGetData, (Handle event, void* data, size_t* size, uint64_t milliseconds), false)                         \
    X(EventGetDataInfo,                                                                                             \
      (Handle event, const void* in, size_t inSize, int32_t what, int32_t* type, void* data, size_t* size), false)  \
    X(EventKill, (Handle event), false)                                                                             \
    /* "System Functions" */                                                                                        \
    X(TLOpen, (Handle * system), true)                                                                              \
    X(TLClose, (Handle system), true)                                                                               \
    X(TLGetInfo, (Handle system, int32_t what, int32_t* type, void* data, size_t* size), true)                      \
    X(TLUpdateInterfaceList, (Handle system, Bool8 * changed, uint64_t milliseconds), true)                         \
    X(TLGetNumInterfaces, (Handle system, uint32_t* count), true)                                                   \
    X(TLGetInterfaceID, (Handle system, uint32_t index, char* id, size_t* size), true)                              \
    X(TLGetInterfaceInfo,                                                                                           \
      (Handle system, const char* id, int32_t what, int32_t* type, void* data, size_t* size), true)                 \
    X(TLOpenInterface, (Handle system, const char* id, Handle* interface), true)                                    \
    /* "Interface Functions" */                                                                                     \
    X(IFClose, (Handle interface), true)                                                                            \
    X(IFUpdateDeviceList, (Handle interface, Bool8 * changed, uint64_t milliseconds), true)                         \
    X(IFGetNumDevices, (Handle interface, uint32_t* count), true)                                                   \
    X(IFGetDeviceID, (Handle interface, uint32_t index, char* id, size_t* size), true)                              \
    X(IFGetDeviceInfo,                                                                                              \
      (Handle interface, const char* id, int32_t what, int32_t* type, void* data, size_t* size), true)              \
    X(IFOpenDevice, (Handle interface, const char* id, int32_t access, Handle* device), true)                       \
    /* "Device Functions" */                                                                                        \
    X(DevClose, (Handle device), true)                                                                              \
    X(DevGetPort, (Handle device, Handle* port), true)
// clang-format on

// "Port Structures": one of several reads of GCReadPortStacked.
#pragma pack(push, 1)
struct StackEntry
{
    uint64_t address;
    void* data;
    size_t size;
};
#pragma pack(pop)

} // namespace gentl
