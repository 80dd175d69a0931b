// One sentence for each status.
#include "KXCameraControl/api/StatusText.h"

namespace kx
{

namespace
{

struct Entry
{
    KX_Status status;
    const char* text;
};

constexpr Entry entries[] = {
    {KX_OK, "Success."},
    {KX_E_HANDLE, "The camera handle is null, destroyed or not open."},
    {KX_E_NOT_SUPPORTED, "The operation is not supported by this library or this transport."},
    {KX_E_BUFFER_TOO_SMALL, "The buffer is too small."},
    {KX_E_CALL_ORDER, "The call does not fit the state of the camera handle."},
    {KX_E_PARAMETER, "A parameter is missing or out of range."},
    {KX_E_MEMORY, "Out of memory."},
    {KX_E_INTERNAL, "An unexpected fault inside the camera library."},
    {KX_E_ABORTED, "The call was refused by its observer."},
    {KX_E_RECORD, "The device record is of another layout than this library's: look for the camera again."},
    {KX_E_GC_GENERIC, "The feature failed."},
    {KX_E_GC_ARGUMENT, "The feature cannot take this value."},
    {KX_E_GC_RANGE, "The value is out of the feature's range."},
    {KX_E_GC_PROPERTY, "The camera has no feature of this name."},
    {KX_E_GC_RUNTIME, "The camera's description of the feature cannot be evaluated."},
    {KX_E_GC_LOGICAL, "The feature has another type."},
    {KX_E_GC_ACCESS, "The feature or register cannot be accessed now."},
    {KX_E_NO_ANSWER, "The camera does not answer."},
    {KX_E_CONNECTION_LOST, "The connection to the camera is lost."},
    {KX_E_CONTROL_REFUSED, "Another application controls the camera."},
    {KX_E_BUSY, "The camera stays busy."},
    {KX_E_NETWORK, "The operating system refused the network operation, or the device."},
    {KX_E_MALFORMED_ANSWER, "The camera's answer does not follow the protocol."},
    {KX_E_DEVICE, "The camera reported a fault of its own."},
    {KX_E_NO_DEVICE, "No camera answers under this device information."},
    {KX_E_FILE, "The file cannot be opened, read or written."},
    {KX_E_FILE_FORMAT, "The file has another format."},
    {KX_E_DESCRIPTION, "The camera has no usable description."},
    {KX_E_INCOMPLETE, "Not every feature took its value."},
};

} // namespace

const char* statusText(KX_Status status)
{
    for (const Entry& entry : entries) {
        if (entry.status == status)
            return entry.text;
    }
    return "An unknown status.";
}

} // namespace kx
