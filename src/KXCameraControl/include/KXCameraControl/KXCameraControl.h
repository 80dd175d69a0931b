/*
 * KXCameraControl: access to machine-vision cameras that are described by GenICam.
 *
 * Plain C, complete in itself. Every function returns a status (KX_OK or one of KX_E_*), never throws and
 * never aborts. Calls on different handles may run at the same time on different threads; calls on one handle
 * are serialised by the library. A call blocks at most for the time-outs set with KX_CC_SetTimeout for each
 * request that it has to send (default: 3 tries of 200 ms each, plus what the camera asks for by
 * PENDING_ACK); behind a GenTL producer for KX_GENTL_TIMEOUT for each call into that.
 *
 * Texts that come from a camera (model, serial number, string values) are handed out as the camera's bytes.
 * Node names and string values that go in are the camera's bytes as well; a description is UTF-8.
 */
#ifndef KX_CAMERA_CONTROL_H
#define KX_CAMERA_CONTROL_H

/* Tables in columns, and structures as C writes them: the formatter would take both apart. */
/* clang-format off */

#include <stdbool.h>
#include <stdint.h>

#if defined(_WIN32)
#  if defined(KX_BUILD_LIBRARY)
#    define KX_API __declspec(dllexport)
#  else
#    define KX_API /* imported without a word; and a test may bring a library of its own */
#  endif
#else
#  define KX_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t KX_Status;

/* Every failure is of one of two groups, which KX_IS_NOT_APPLICABLE and KX_IS_LINE_FAILURE below tell apart. */
#define KX_OK                  ((KX_Status)0u)

#define KX_E_HANDLE            ((KX_Status)0x80000000u) /* null, destroyed or never opened handle */
#define KX_E_NOT_SUPPORTED     ((KX_Status)0x80000001u) /* this library or this transport has no such operation */
#define KX_E_BUFFER_TOO_SMALL  ((KX_Status)0x80000002u) /* nothing was written; the out length says what is needed */
#define KX_E_CALL_ORDER        ((KX_Status)0x80000003u) /* already open, or not open yet */
#define KX_E_PARAMETER         ((KX_Status)0x80000004u) /* a null pointer, an empty name, a length out of range */
#define KX_E_MEMORY            ((KX_Status)0x80000005u) /* out of memory */
#define KX_E_INTERNAL          ((KX_Status)0x80000006u) /* an unexpected fault inside the library */
#define KX_E_ABORTED           ((KX_Status)0x80000007u) /* a call observer refused the call */
#define KX_E_RECORD            ((KX_Status)0x80000008u) /* a KX_DeviceInfo that was not made by this version's layout */

#define KX_E_GC_GENERIC        ((KX_Status)0x80000100u) /* the node failed in a way that no other class names */
#define KX_E_GC_ARGUMENT       ((KX_Status)0x80000101u) /* a value that the node cannot take (not a multiple of the increment,
                                                       not an entry of the enumeration, text too long) */
#define KX_E_GC_RANGE          ((KX_Status)0x80000102u) /* below the minimum or above the maximum */
#define KX_E_GC_PROPERTY       ((KX_Status)0x80000103u) /* no node of that name */
#define KX_E_GC_RUNTIME        ((KX_Status)0x80000104u) /* a formula failed, or the node hangs on a circle or a dangling reference */
#define KX_E_GC_LOGICAL        ((KX_Status)0x80000105u) /* the node has another type */
#define KX_E_GC_ACCESS         ((KX_Status)0x80000106u) /* not readable or not writable now; or the camera refused the register */

#define KX_E_NO_ANSWER         ((KX_Status)0x80000200u) /* every try timed out */
#define KX_E_CONNECTION_LOST   ((KX_Status)0x80000201u) /* the camera went away, or dropped our control */
#define KX_E_CONTROL_REFUSED   ((KX_Status)0x80000202u) /* another host or program has the camera */
#define KX_E_BUSY              ((KX_Status)0x80000203u) /* the camera stayed busy through every try */
#define KX_E_NETWORK           ((KX_Status)0x80000204u) /* the operating system refused the line: a socket, a serial line,
                                                       a USB device that this user may not open */
#define KX_E_MALFORMED_ANSWER  ((KX_Status)0x80000205u) /* the camera answered something that the protocol does not allow */
#define KX_E_DEVICE            ((KX_Status)0x80000206u) /* the camera reported a fault of its own */
#define KX_E_NO_DEVICE         ((KX_Status)0x80000207u) /* nobody answers under that device information */

#define KX_E_FILE              ((KX_Status)0x80000300u) /* a file cannot be opened, read or written */
#define KX_E_FILE_FORMAT       ((KX_Status)0x80000301u) /* a file is not what it should be */
#define KX_E_DESCRIPTION       ((KX_Status)0x80000302u) /* the camera has no usable GenICam description */
#define KX_E_INCOMPLETE        ((KX_Status)0x80000303u) /* a feature file was loaded, but not every feature took its value; or
                                                       saved, but not all of it */

/* 0x80000004 and 0x80000100..0x80000106 say "this does not apply to this node now": the camera answered and
 * refused, or the description rules it out. Every other failure, an unknown one too, says that the line, the camera
 * or the program failed. KX_OK is of neither group. The argument is a KX_Status and is evaluated once. */
#define KX_IS_NOT_APPLICABLE(status) KX_CC_IsNotApplicable(status)
#define KX_IS_LINE_FAILURE(status)   KX_CC_IsLineFailure(status)

static inline bool KX_CC_IsNotApplicable(KX_Status status)
{
    return status == KX_E_PARAMETER || (status >= KX_E_GC_GENERIC && status <= KX_E_GC_ACCESS);
}

static inline bool KX_CC_IsLineFailure(KX_Status status)
{
    return status != KX_OK && !KX_CC_IsNotApplicable(status);
}

/* ---- who is there ------------------------------------------------------------------------------------- */

enum
{
    KX_TRANSPORT_GIGE = 1,
    KX_TRANSPORT_USB3 = 4,
    KX_TRANSPORT_CAMERA_LINK = 8,
    KX_TRANSPORT_ALL = 1 | 4 | 8
};

/* All texts below are zero-terminated inside their field; longer ones are cut. */

typedef struct KX_GigEDeviceInfo
{
    uint32_t macHigh;            /* upper 16 bits of the MAC address in the low half */
    uint32_t macLow;             /* lower 32 bits */
    uint8_t modelName[32];       /* GigE Vision bootstrap register 0x0068 */
    uint8_t serialNumber[16];    /* 0x00D8 */
    uint8_t userDefinedName[16]; /* 0x00E8 */
    uint8_t manufacturerName[32];
    uint8_t deviceVersion[32];
    uint32_t ipAddress;          /* host byte order */
    uint32_t interfaceAddress;   /* the local address that it was seen from, host byte order; 0: unicast */
} KX_GigEDeviceInfo;

typedef struct KX_Usb3DeviceInfo
{
    uint8_t modelName[64];
    uint8_t serialNumber[64];
    uint8_t userDefinedName[64];
    uint8_t manufacturerName[64];
    uint32_t vendorId;
    uint32_t productId;
    uint8_t guid[64];     /* what tells the camera from all others (USB3 Vision, "Device GUID"); empty: not readable */
    uint8_t location[32]; /* where it hangs, as "2-1.4": bus, and the ports on the way; counts where there is no GUID */
} KX_Usb3DeviceInfo;

/* Identifiers that do not fit their field end in ~ and a number made of the whole text. */
typedef struct KX_CameraLinkDeviceInfo
{
    uint8_t portId[64]; /* the serial line's path; of a grabber's serial library its word for the port; behind a GenTL
                           producer its interface as people know it */
    uint8_t modelName[64];
    uint8_t serialNumber[64];
    uint8_t layerName[16];   /* "CL", "CXP", "CLHS", ... as the producer says; empty: a serial line */
    uint8_t producerId[64];  /* path of the GenTL producer, or of the serial library; empty: a line of the system's */
    uint8_t interfaceId[64]; /* GenTL: the producer's own id of the interface; the number of a serial library's port */
    uint8_t deviceId[64];    /* GenTL: the producer's own id of the device; empty: no GenTL producer */
} KX_CameraLinkDeviceInfo;

#define KX_DEVICE_INFO_LAYOUT 0x4B580002u /* changes whenever KX_DeviceInfo does; no older record has it there */

/* Plain data: may be copied, kept and handed back in any later process that has the same layout; a record of another
 * one is refused with KX_E_RECORD by every function that takes one. The member that counts is the one that
 * `transportType` names. */
typedef struct KX_DeviceInfo
{
    uint32_t transportType; /* one KX_TRANSPORT_ value */
    uint32_t layout;        /* KX_DEVICE_INFO_LAYOUT */
    union
    {
        KX_GigEDeviceInfo gige;
        KX_Usb3DeviceInfo usb3;
        KX_CameraLinkDeviceInfo cameraLink;
    } special;
} KX_DeviceInfo;

enum
{
    KX_AVAILABILITY_FREE = 1,
    KX_AVAILABILITY_IN_USE = 2,     /* another program or host holds control; this process does not count */
    KX_AVAILABILITY_UNREACHABLE = 3 /* answers discovery, but not reads (another subnet, a broken device) */
};

typedef struct KX_DeviceEntry
{
    KX_DeviceInfo info;
    uint32_t availability;  /* one KX_AVAILABILITY_ value, taken without taking control */
    char interfaceName[64]; /* "eth0", "USB 2-1.4", "serial", ...; "unicast" when the camera was asked by address */
    uint32_t interfaceMask; /* GigE: of the interface's network, host byte order; 0: unicast, another transport. A
                             * camera outside of it heard the broadcast and is reached by nothing but a route */
} KX_DeviceEntry;

/* Finds the cameras of the transports in `transportMask` and writes up to `capacity` entries; `*count` is the
 * number found, which may exceed `capacity`. Order: transport, then serial number, then address or port. Takes
 * control of nothing. All transports are searched at once: blocks for the discovery window (400 ms) when a network
 * is searched, and for up to 1.5 s while a serial line that was named has no camera.
 * Environment: KX_CAMERA_INTERFACES names the interfaces (names or addresses, comma-separated) that broadcast
 * discovery uses; unset: all; "none": no broadcast. KX_CAMERA_ADDRESSES names addresses to ask directly too. What
 * is no interface and no address there is passed over (KX_CC_CheckSearchPlaces tells of it).
 * KX_CAMERA_USB=none: no USB device is looked at or opened; otherwise all USB3 Vision cameras are found, and for an
 * instant claimed to see whether they are free.
 * KX_CAMERA_SERIAL_PORTS names serial lines (paths, comma-separated) that Camera Link cameras may be behind, CLSERIALPATH
 * folders (separated by colons) with serial libraries of frame grabbers (clser*.so, libclser*.so), each port of which is
 * looked at; no other line is touched, by this function or by opening a record that names one. GENICAM_GENTL64_PATH names folders (separated
 * by colons) with the GenTL producers of frame grabbers (files that end in .cti). Each library and producer works in a process of its own
 * and is ended when a call into it takes longer than KX_GENTL_TIMEOUT (ms, default 10,000): a search with one that hangs
 * blocks for so long once, and leaves it alone for half a minute. Their GigE Vision and USB3 Vision cameras are left out.
 * KX_E_PARAMETER: `count` null, or `entries` null with capacity > 0. KX_E_NETWORK: no socket could be opened, and no
 * camera of another transport was found. */
KX_API KX_Status KX_CC_EnumDevices(uint32_t transportMask, KX_DeviceEntry* entries, uint32_t capacity,
                                   uint32_t* count);

/* Whether everything that KX_CAMERA_INTERFACES and KX_CAMERA_ADDRESSES name can be searched and asked now. Sends
 * nothing, does not block. KX_E_PARAMETER: something is no interface of this machine, or no address;
 * KX_CC_GetLastErrorText(NULL, ...) has a sentence for each, separated by line feeds. */
KX_API KX_Status KX_CC_CheckSearchPlaces(void);

/* What hides cameras beyond that: GenTL producers and serial libraries that cannot be used, or that failed in the last search of this process
 * (each hides no other's cameras), serial lines that are not there, and those and USB cameras that this user may not open. A sentence for each, separated by line feeds, zero-terminated; `*length` is the length
 * without the zero, also when `capacity` was too small (KX_E_BUFFER_TOO_SMALL). Sends nothing, does not block.
 * KX_E_PARAMETER: `length` null, or `text` null with capacity > 0. */
KX_API KX_Status KX_CC_GetSearchProblems(char* text, uint32_t capacity, uint32_t* length);

/* The addresses that KX_CAMERA_ADDRESSES names, in host byte order, ascending, each once: up to `capacity` of them;
 * `*count` is how many there are. One that no KX_CC_EnumDevices record has as its address did not answer. Sends
 * nothing, does not block. KX_E_PARAMETER: `count` null, or `addresses` null with capacity > 0. */
KX_API KX_Status KX_CC_GetSearchAddresses(uint32_t* addresses, uint32_t capacity, uint32_t* count);

/* Asks one camera again. `*availability` gets a KX_AVAILABILITY_ value; a camera that does not answer is
 * KX_AVAILABILITY_UNREACHABLE with KX_OK. KX_E_PARAMETER: a null pointer. KX_E_RECORD. KX_E_NOT_SUPPORTED: the
 * transport. */
KX_API KX_Status KX_CC_IsDeviceAccessible(const KX_DeviceInfo* device, uint32_t* availability);

typedef struct KX_Controller
{
    uint32_t ipAddress; /* host byte order; 0: nobody, or not known */
    uint32_t port;      /* UDP; 0: not known */
    uint32_t reserved[4];
} KX_Controller;

/* Asks one camera who controls it (GigE Vision bootstrap registers 0x0A14 and 0x0A04). A camera that does not answer,
 * does not show it, or is under exclusive control, gives zeroes with KX_OK. Takes control of nothing.
 * KX_E_PARAMETER: a null pointer. KX_E_RECORD. KX_E_NOT_SUPPORTED: the transport. KX_E_NETWORK: no socket could be
 * opened. */
KX_API KX_Status KX_CC_GetController(const KX_DeviceInfo* device, KX_Controller* controller);

/* Gives a GigE Vision camera another address for as long as it stays switched on (GigE Vision, chapter "GVCP",
 * FORCEIP_CMD): a broadcast behind the interface that the record was found at, for the camera of the record's MAC
 * address alone, so that one of another network is reached as well. Of a record that was found by its address alone
 * the command goes to that address. All in host byte order; `gateway` may be 0. Takes control of nothing; a camera that somebody
 * controls does not obey. Does not ask whether the address is somebody else's: KX_CC_ProbeAddress does.
 * Blocks until the camera has answered a search with its new address, for 6 s at most. KX_E_PARAMETER: `device` null, an
 * address or a mask that no host can have. KX_E_RECORD. KX_E_NOT_SUPPORTED: the transport. KX_E_NETWORK: no socket, or the interface is
 * gone. KX_E_CONTROL_REFUSED: somebody controls it. KX_E_NO_ANSWER: nothing was heard from the new address; of a camera that answers and refuses,
 * the status of that. */
KX_API KX_Status KX_CC_ForceIp(const KX_DeviceInfo* device, uint32_t address, uint32_t mask, uint32_t gateway);

/* How it was found out who is at an address. */
enum
{
    KX_PROBE_ARP = 1,     /* by ARP probes (RFC 5227): whoever has the address answers */
    KX_PROBE_REQUEST = 2, /* by a GigE Vision request and a connection attempt: a host that answers neither is missed */
    KX_PROBE_OWN = 3      /* an interface of this host has it */
};

typedef struct KX_AddressOwner
{
    uint32_t isTaken; /* 1: somebody answers there; 0: nobody */
    uint32_t means;   /* one KX_PROBE_ value */
    uint32_t macHigh; /* of who answers, as in KX_GigEDeviceInfo; both 0: not known */
    uint32_t macLow;
    uint32_t reserved[4];
} KX_AddressOwner;

/* Asks who is at an IPv4 address (host byte order) behind the interface that has `interfaceAddress`; 0: behind the one that leads
 * there. By ARP where the system lets this user (Linux: CAP_NET_RAW) and the line has it, else as KX_PROBE_REQUEST says. A camera
 * answers for its own address too: compare the MAC address. Blocks for up to 1.5 s. KX_E_PARAMETER: `owner` null, an address
 * that no host can have. */
KX_API KX_Status KX_CC_ProbeAddress(uint32_t address, uint32_t interfaceAddress, KX_AddressOwner* owner);

/* A number that changes whenever a network interface of this machine comes, goes, or changes its address, and when a
 * USB device or a named serial line comes or goes: a reason to look for cameras again. 0: nothing of that could be read. Sends
 * nothing, does not block. */
KX_API uint32_t KX_CC_GetInterfaceStamp(void);

/* Major << 24 | minor << 16 | patch. */
KX_API uint32_t KX_CC_GetSDKVersion(void);

/* A short English sentence for a status; never null, static storage. Unknown values get a general one. */
KX_API const char* KX_CC_StatusText(KX_Status status);

/* ---- handles ------------------------------------------------------------------------------------------ */

typedef struct KX_Camera* KX_HANDLE;

enum
{
    KX_ACCESS_EXCLUSIVE = 1, /* control, and reads by other hosts refused */
    KX_ACCESS_CONTROL = 3,   /* control; others may read */
    KX_ACCESS_MONITOR = 7    /* reads only; takes nothing, works beside another host's control */
};

/* Sends nothing. `*handle` is written on success only. KX_E_PARAMETER: a null pointer. KX_E_RECORD.
 * KX_E_NOT_SUPPORTED: a transport that this build has no port for. */
KX_API KX_Status KX_CC_CreateHandle(KX_HANDLE* handle, const KX_DeviceInfo* device);

/* Connects, takes control as `accessMode` says, fetches the description and builds the node map.
 * A description that was fetched before, by whichever process, is used again when the camera's maker, model, device
 * version and URL are the same and blocks of it are found in the camera: those that change whenever the others do
 * (an archive's checksum, a text's VersionGuid), the first, the last, and three chosen at random. Environment:
 * KX_DESCRIPTION_CACHE names the folder where they are kept (64 MB, the oldest go first); unset: VELA/descriptions in
 * XDG_DATA_HOME or HOME/.local/share; "off", another user's or open to others: none but the last few of this process.
 * `switchOverKey` is the key for a control switch-over (GigE Vision 2.x), 0: none.
 * KX_E_HANDLE; KX_E_CALL_ORDER: already open; KX_E_PARAMETER: unknown mode; KX_E_CONTROL_REFUSED;
 * KX_E_NO_ANSWER; KX_E_NO_DEVICE; KX_E_NETWORK; KX_E_DESCRIPTION is never given here: a camera whose description
 * is unusable opens, its text stays available, its nodes are missing. On failure nothing stays connected. */
KX_API KX_Status KX_CC_OpenDevice(KX_HANDLE handle, uint32_t accessMode, uint16_t switchOverKey);

/* Gives control back and disconnects. Harmless on a handle that never opened or is closed already (KX_OK).
 * KX_E_HANDLE: null or destroyed. A camera that does not answer any more is closed all the same (KX_OK). */
KX_API KX_Status KX_CC_CloseDevice(KX_HANDLE handle);

/* Closes if need be and frees the handle, which must not be used after. KX_E_HANDLE: null or destroyed. */
KX_API KX_Status KX_CC_DestroyHandle(KX_HANDLE handle);

/* Time that one try of a request may take, in ms (10..60000; default 200), and the number of tries (1..20;
 * default 3). Before or after opening. KX_E_HANDLE, KX_E_PARAMETER. */
KX_API KX_Status KX_CC_SetTimeout(KX_HANDLE handle, uint32_t milliseconds, uint32_t tries);

/* What the last failing call on this handle had to say beyond its status, e.g. which features of a feature file
 * did not take. Written zero-terminated; `*length` is the length without the zero, also when `capacity` was too
 * small (KX_E_BUFFER_TOO_SMALL). `handle` null: the last failure on the calling thread. */
KX_API KX_Status KX_CC_GetLastErrorText(KX_HANDLE handle, char* text, uint32_t capacity, uint32_t* length);

/* Told once, on a thread of the library, when an open connection is found lost (`status` says how). Further calls
 * on the handle give KX_E_CONNECTION_LOST. The handler must return soon and must not call back into the library
 * with that handle. `handler` null: nobody is told. KX_E_HANDLE. */
typedef void (*KX_ConnectionLostHandler)(void* user, KX_Status status);
KX_API KX_Status KX_CC_SetConnectionLostHandler(KX_HANDLE handle, KX_ConnectionLostHandler handler, void* user);

/* ---- call observer ------------------------------------------------------------------------------------ */

typedef enum KX_Operation
{
    KX_OP_OPEN = 1,
    KX_OP_CLOSE = 2,
    KX_OP_GET_BOOL = 10,
    KX_OP_GET_ENUM = 11,
    KX_OP_GET_FLOAT = 12,
    KX_OP_GET_INT = 13,
    KX_OP_GET_STRING = 14,
    KX_OP_SET_BOOL = 20,
    KX_OP_SET_ENUM = 21,
    KX_OP_SET_FLOAT = 22,
    KX_OP_SET_INT = 23,
    KX_OP_SET_STRING = 24,
    KX_OP_EXECUTE = 25,
    KX_OP_READ_MEMORY = 30,
    KX_OP_WRITE_MEMORY = 31,
    KX_OP_GET_DESCRIPTION = 40,
    KX_OP_GET_ACCESS_MODE = 41,
    KX_OP_GET_ENTRY_NAME = 42,
    KX_OP_GET_INCREMENT_ORIGIN = 43,
    KX_OP_IS_EVER_WRITABLE = 44,
    KX_OP_GET_RELATED_NAMES = 45,
    KX_OP_GET_REGISTER_COVERAGE = 46,
    KX_OP_GET_REGISTER_NAMES = 47,
    KX_OP_FEATURE_SAVE = 50,
    KX_OP_FEATURE_LOAD = 51
} KX_Operation;

typedef struct KX_CallEvent
{
    KX_HANDLE handle;
    const KX_DeviceInfo* device; /* of the handle; valid during the call only */
    uint32_t operation;          /* a KX_Operation */
    uint32_t finished;           /* 0: about to run (may be refused); 1: over, `status` holds */
    const char* nodeName;        /* null where the operation has none; a file path for feature save and load */
    int64_t address;             /* memory operations */
    int64_t length;
    KX_Status status;
    uint64_t requests;           /* requests sent over this connection so far, retries included */
    const void* value;           /* what a call that is over and went well has got or given; valid during the call only.
                                    Getters: their record. Setters: bool, uint32_t (enumeration), float, int64_t, or
                                    zero-terminated text. Memory: `length` bytes. Open: the description as zero-terminated
                                    text, empty when there is none. Feature save: uint32_t, the number of
                                    entries of the file. Null for everything else. */
} KX_CallEvent;

/* Called on the thread of the observed call, before and after it. Non-zero from the call before (`finished` 0)
 * refuses it: it returns KX_E_ABORTED and the observer is called once more with that status. KX_OP_CLOSE cannot
 * be refused. The observer must not call the library with the same handle. */
typedef int (*KX_CallObserver)(void* user, const KX_CallEvent* event);

/* Observes one handle, or with `handle` null every handle that is created from now on. `observer` null ends it.
 * KX_E_HANDLE: destroyed. */
KX_API KX_Status KX_CC_SetCallObserver(KX_HANDLE handle, KX_CallObserver observer, void* user);

/* ---- features ----------------------------------------------------------------------------------------- */

typedef struct KX_IntegerValue
{
    int64_t current;
    int64_t maximum;
    int64_t minimum;
    int64_t increment; /* at least 1 */
    uint32_t reserved[16];
} KX_IntegerValue;

#define KX_ENUM_CAPACITY 64

/* Numbers from -2^31 to 2^32-1, as 32 bits. GenApi's have 64: what does not fit is refused (KX_E_GC_RANGE), read or
 * written, as is a number that two entries share in 32 bits; the entries in question are not among `supported`. */
typedef struct KX_EnumValue
{
    uint32_t current;
    uint32_t supportedCount; /* entries that are implemented and available now: all of them, so it may exceed
                                KX_ENUM_CAPACITY */
    uint32_t supported[KX_ENUM_CAPACITY]; /* the first of them, in the description's order: as many as there are, at
                                             most KX_ENUM_CAPACITY. Those behind can be set all the same, and
                                             KX_CC_GetEnumEntryName tells the names of all. */
    uint32_t reserved[4];
} KX_EnumValue;

typedef struct KX_FloatValue
{
    float current;
    float maximum;
    float minimum;
    uint32_t reserved[4];
} KX_FloatValue;

typedef struct KX_StringValue
{
    char current[256]; /* zero-terminated; longer texts are cut */
    int64_t maximumLength;
    uint32_t reserved[2];
} KX_StringValue;

/* The getters leave the caller's record untouched on failure. Statuses of all getters: KX_E_HANDLE (null or not
 * open), KX_E_PARAMETER (null or empty name, null record), KX_E_GC_PROPERTY (no such node), KX_E_GC_LOGICAL (the
 * node has another interface), KX_E_GC_ACCESS (not implemented, not available or write-only now, or the camera
 * refused the register), KX_E_GC_RUNTIME (formula), the statuses of a failed line (KX_E_NO_ANSWER to
 * KX_E_DEVICE), KX_E_ABORTED. */
KX_API KX_Status KX_CC_GetBoolValue(KX_HANDLE handle, const char* name, bool* value);
KX_API KX_Status KX_CC_GetEnumValue(KX_HANDLE handle, const char* name, KX_EnumValue* value);
KX_API KX_Status KX_CC_GetFloatValue(KX_HANDLE handle, const char* name, KX_FloatValue* value);
KX_API KX_Status KX_CC_GetIntValueEx(KX_HANDLE handle, const char* name, KX_IntegerValue* value);
KX_API KX_Status KX_CC_GetStringValue(KX_HANDLE handle, const char* name, KX_StringValue* value);

/* From where the increment of an integer counts: KX_CC_SetIntValueEx takes `*origin` plus any multiple of the
 * increment, above and below it, that lies within minimum and maximum (GenApi: a value is the minimum plus a
 * multiple of the increment). That is the minimum that the description gives the node, or a node behind its value; 0
 * where none gives one and `minimum` is only what the register or the type can hold. Statuses as the getters;
 * `*origin` is written on success only. */
KX_API KX_Status KX_CC_GetIntIncrementOrigin(KX_HANDLE handle, const char* name, int64_t* origin);

/* The symbolic name of the entry of the enumeration `name` whose number is `value`, from the description alone:
 * nothing is sent, and entries that are not available now are named too. Of several entries of one number the first
 * counts. UTF-8, written zero-terminated; `*length` is the length without the zero, also when `capacity` is too small
 * (KX_E_BUFFER_TOO_SMALL). KX_E_HANDLE, KX_E_PARAMETER (null or empty name, null `length`, null `text` with capacity
 * > 0), KX_E_GC_PROPERTY (no such node), KX_E_GC_LOGICAL (no enumeration), KX_E_GC_ARGUMENT (no such entry),
 * KX_E_CONNECTION_LOST, KX_E_ABORTED. */
KX_API KX_Status KX_CC_GetEnumEntryName(KX_HANDLE handle, const char* name, uint32_t value, char* text,
                                        uint32_t capacity, uint32_t* length);

/* The setters check before they send: KX_E_GC_ACCESS (not writable now, or opened for monitoring), KX_E_GC_RANGE,
 * KX_E_GC_ARGUMENT (increment, unknown entry, text too long); otherwise as the getters. A float written to an
 * integer behind it is rounded to the nearest that the integer's increment allows, of two the lower one. */
KX_API KX_Status KX_CC_SetBoolValue(KX_HANDLE handle, const char* name, bool value);
KX_API KX_Status KX_CC_SetEnumValue(KX_HANDLE handle, const char* name, unsigned int value);
KX_API KX_Status KX_CC_SetFloatValue(KX_HANDLE handle, const char* name, float value);
KX_API KX_Status KX_CC_SetIntValueEx(KX_HANDLE handle, const char* name, int64_t value);
KX_API KX_Status KX_CC_SetStringValue(KX_HANDLE handle, const char* name, const char* value);

/* Executes a command node; does not wait for it to be done. Statuses as the setters. */
KX_API KX_Status KX_CC_ExecuteCommand(KX_HANDLE handle, const char* name);

/* Registers that are read serve the calls of the next 300 ms (on slow serial lines longer: the time of forty reads
 * is added), up to the next write; those that the description says
 * to change by themselves (NoCache, PollingTime) serve one call. While features are asked for in the order of their
 * names, registers of those that follow are read along in batches, and serve in the same way: of NoCache registers one
 * call for each feature, of device memory that is read by its address in such a row one call for each feature that
 * stands there. Environment: KX_CAMERA_READ_AHEAD=0, looked at when a camera is opened, keeps that from being done. */

/* Device memory as it stands on the wire. `length` in bytes, 1..0x1000000. On GigE Vision an address that is no
 * multiple of 4 is refused (KX_E_GC_ACCESS, nothing sent), as are addresses above 32 bits; lengths are rounded up
 * for the wire and cut for the caller; a write of an odd length reads the last word first. A failed read leaves
 * the buffer untouched. KX_E_HANDLE, KX_E_PARAMETER (null buffer, length), KX_E_GC_ACCESS (the camera refused the
 * address, or opened for monitoring), the statuses of a failed line, KX_E_ABORTED. */
KX_API KX_Status KX_CC_ReadMemory(KX_HANDLE handle, void* buffer, int64_t address, int64_t length);
KX_API KX_Status KX_CC_WriteMemory(KX_HANDLE handle, const void* buffer, int64_t address, int64_t length);

/* The description as zero-terminated text. `*length` becomes the bytes needed, the terminator included, also when
 * `size` is too small (KX_E_BUFFER_TOO_SMALL, buffer untouched). It is left untouched by every other failure:
 * KX_E_HANDLE, KX_E_PARAMETER (null pointers), KX_E_DESCRIPTION (none could be fetched), KX_E_ABORTED. */
KX_API KX_Status KX_XML_GetGenICamXML(KX_HANDLE handle, void* buffer, uint32_t size, uint32_t* length);

/* The values of GenApi's EAccessMode, in its order. */
typedef enum KX_XML_AccessMode
{
    KX_AM_NOT_IMPLEMENTED = 0,
    KX_AM_NOT_AVAILABLE = 1,
    KX_AM_WRITE_ONLY = 2,
    KX_AM_READ_ONLY = 3,
    KX_AM_READ_WRITE = 4,
    KX_AM_UNDEFINED = 5,
    KX_AM_CYCLE_DETECTED = 6
} KX_XML_AccessMode;

/* Of the camera as it stands, whatever the handle was opened for: over one that monitors, a writable node is told as
 * writable though this handle does not write. KX_E_HANDLE, KX_E_PARAMETER, KX_E_GC_PROPERTY (no such node), the
 * statuses of a failed line, KX_E_ABORTED. `*mode` is written on success only. */
KX_API KX_Status KX_XML_GetNodeAccessMode(KX_HANDLE handle, const char* name, KX_XML_AccessMode* mode);

/* ---- what the description says ------------------------------------------------------------------------ */

/* The four functions below answer from the description alone: nothing is sent, what the camera says now plays no
 * part, and a handle that monitors gets the same answers. The first question over an opened camera costs some
 * milliseconds, further ones little. What they hand out is the caller's. Statuses of all: KX_E_HANDLE (null or not
 * open), KX_E_PARAMETER (null or empty name, null pointers, an unknown relation, a length out of range),
 * KX_E_GC_PROPERTY (no such node), KX_E_MEMORY, KX_E_CONNECTION_LOST, KX_E_ABORTED; nothing is written on failure but
 * a length with KX_E_BUFFER_TOO_SMALL. */

/* Whether anyone may ever write the feature `name`: a setting (true) or a state (false). True when a way leads over
 * its values (GenApi: pValue and its indexed forms, pValueCopy) to a register whose AccessMode lets it be written,
 * without an ImposedAccessMode RO and with a FormulaTo in every converter. False for what is computed, for chunk and
 * event data, for nodes that cannot be used at all (circles, dangling references) and for a value that stands in the
 * description itself: such a one can be set (its access mode says so) but stays in this handle, and no camera ever
 * learns of it. What is locked, not available or not implemented now does not count: it may be otherwise later. */
KX_API KX_Status KX_CC_IsEverWritable(KX_HANDLE handle, const char* name, bool* writable);

/* What a feature hangs on. Nodes that no category lists are followed down to features; a register of the camera that
 * no feature shows is named itself. At most 400 nodes are
 * followed. */
typedef enum KX_Relation
{
    KX_RELATED_SELECTORS = 1,    /* whose pSelected names it; one step: a selector's own selectors are asked for with
                                    its name */
    KX_RELATED_INVALIDATORS = 2, /* behind pInvalidator of it or of a node that its value comes from: writing or
                                    executing them changes it (LUTIndex for LUTValue, commands of a file access) */
    KX_RELATED_PLACE = 3,        /* its register's address or length, or which of several values it shows, hangs on
                                    them: it is a window of data, of which one place is seen at a time */
    KX_RELATED_LOCKS = 4         /* behind pIsLocked of it or of a node that its value comes from (ExposureAuto for
                                    ExposureTime) */
} KX_Relation;

/* Names of the nodes that `relation` (a KX_Relation) names for `name`, separated by line feeds, each once, never
 * `name` itself; the empty text when there are none. UTF-8, written zero-terminated; `*length` is the length without
 * the zero, also when `capacity` is too small (KX_E_BUFFER_TOO_SMALL). `text` may be null with capacity 0. */
KX_API KX_Status KX_CC_GetRelatedNames(KX_HANDLE handle, const char* name, uint32_t relation, char* text,
                                       uint32_t capacity, uint32_t* length);

/* Registers are the nodes of IntReg, MaskedIntReg, StructEntry, FloatReg, StringReg and Register; several may share
 * an address. One that selectors or other features move lies in all the places that it can be moved to (at most 4096,
 * as far as the description tells their values). */
typedef struct KX_RegisterCoverage
{
    uint32_t registers;        /* that share a byte with the range */
    uint32_t writable;         /* of these: may ever be written, as KX_CC_IsEverWritable tells */
    uint32_t unplaced;         /* registers of the whole description whose place only the camera can tell (it hangs on
                                  a register, or on more places than are gone through): any may lie in the range */
    uint32_t unplacedWritable; /* of these */
    uint32_t reserved[4];
} KX_RegisterCoverage;

/* What the description knows of `length` bytes (1..0x1000000) of device memory from `address` on. Registers of chunk and
 * event data lie elsewhere, at addresses that count within that data; `registers` and `unplaced` count them by these
 * addresses all the same, as exports name them so. They are never writable. No register of the description lies there
 * for certain when `registers` and `unplaced` are 0, and nobody ever writes there through the
 * description when `writable` and `unplacedWritable` are 0. */
KX_API KX_Status KX_CC_GetRegisterCoverage(KX_HANDLE handle, int64_t address, int64_t length,
                                           KX_RegisterCoverage* coverage);

/* The names of the `registers` of that range, those of chunk and event data left out, in the description's order, as a
 * text like that of KX_CC_GetRelatedNames. */
KX_API KX_Status KX_CC_GetRegisterNames(KX_HANDLE handle, int64_t address, int64_t length, char* text,
                                        uint32_t capacity, uint32_t* textLength);

/* Feature files in the GenApi persistence text (GenApi, "Streaming"), so that other makers' files and tools work with
 * them. `path` is Latin-1. The observer is told of each feature (the operation, its name, `finished` 0) and may end
 * the work there (KX_E_ABORTED). Of each value that a load has read or written, and of a write that the line has failed,
 * it is told as of a getter or setter of texts that is over (KX_OP_GET_STRING with a KX_StringValue, KX_OP_SET_STRING).
 * Save: all features of the categories that are streamable, readable and writable, for every combination of their
 * selectors, which are put back to what they were on every way out. The file appears whole or not at all. A camera
 * without such a feature (descriptions before schema 1.1 know no Streamable) gives a file without an entry and KX_OK:
 * the observer is told the number of entries (KX_CallEvent, `value`), and a comment in the file says it. Of a selector
 * of more than 65,536 values the features are saved for the one that it has, of more than 262,144 combinations of
 * selectors the first ones; then comments in the file say so and the status is KX_E_INCOMPLETE. A value that the text
 * has no form for, line breaks in it, is left out, which a comment says.
 * Load: passes over the file until nothing more settles, between the camera's streaming commands where it has them.
 * KX_E_FILE: the file cannot be opened, read or written; KX_E_FILE_FORMAT: it is no such file; KX_E_INCOMPLETE: some
 * entries did not take their value, something was cut off, or a selector could not be put back
 * (KX_CC_GetLastErrorText lists them with their reasons); KX_E_HANDLE, KX_E_PARAMETER; the statuses of a failed line; KX_E_ABORTED. */
KX_API KX_Status KX_CC_FeatureSave(KX_HANDLE handle, const char* path);
KX_API KX_Status KX_CC_FeatureLoad(KX_HANDLE handle, const char* path);

#ifdef __cplusplus
}
#endif

/* clang-format on */

#endif
