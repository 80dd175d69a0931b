#include "SuiteTools/SuiteTools.h"

#include <KXCameraControl/KXCameraControl.h>

namespace VELAInterface
{

namespace
{

// The texts stand directly behind "[0x80000201]": an English one begins with the blank that parts them, a
// Chinese one needs none.
struct ErrorText
{
    KX_Status status;
    const char* english;
    const char* chinese;
};

constexpr ErrorText kErrorTexts[] = {
    {KX_OK, " The operation succeeded.", "操作成功。"},
    {KX_E_HANDLE, " The camera is not open.", "相机未打开。"},
    {KX_E_NOT_SUPPORTED, " This camera or this version of the software does not support the operation.",
     "该相机或当前软件版本不支持此操作。"},
    {KX_E_BUFFER_TOO_SMALL, " The data does not fit into the memory set aside for it.",
     "预留的内存不足以存放数据。"},
    {KX_E_CALL_ORDER, " The camera is already open, or not open yet.", "相机已打开或尚未打开。"},
    {KX_E_PARAMETER, " A parameter is invalid.", "参数无效。"},
    {KX_E_MEMORY, " There is not enough memory.", "内存不足。"},
    {KX_E_INTERNAL, " An unexpected fault occurred in the camera library.", "相机库发生意外故障。"},
    {KX_E_ABORTED, " The operation was cancelled.", "操作已取消。"},
    {KX_E_RECORD, " The camera's record was made by another version of the software.",
     "相机记录来自其他软件版本。"},
    {KX_E_GC_GENERIC, " The camera's feature reported a general fault.", "相机属性发生一般性错误。"},
    {KX_E_GC_ARGUMENT, " The feature does not take this value.", "该属性不接受此值。"},
    {KX_E_GC_RANGE, " The value is outside the range of the feature.", "数值超出属性的取值范围。"},
    {KX_E_GC_PROPERTY, " The camera has no such feature.", "相机没有该属性。"},
    {KX_E_GC_RUNTIME, " The feature's value could not be worked out from the camera's description.",
     "无法根据相机描述文件得出该属性的值。"},
    {KX_E_GC_LOGICAL, " The feature has another type.", "属性类型不符。"},
    {KX_E_GC_ACCESS, " The feature cannot be read or written at present.", "该属性当前不可读或不可写。"},
    {KX_E_NO_ANSWER, " The camera does not answer.", "相机无响应。"},
    {KX_E_CONNECTION_LOST, " The connection to the camera is lost.", "与相机的连接已断开。"},
    {KX_E_CONTROL_REFUSED, " The camera is controlled by another program.", "相机正被其他程序控制。"},
    {KX_E_BUSY, " The camera is busy.", "相机忙。"},
    {KX_E_NETWORK, " The network or the device cannot be used.", "网络或设备不可用。"},
    {KX_E_MALFORMED_ANSWER, " The camera's answer does not follow the protocol.", "相机的应答不符合协议。"},
    {KX_E_DEVICE, " The camera reported a fault of its own.", "相机报告自身故障。"},
    {KX_E_NO_DEVICE, " The camera was not found.", "未找到相机。"},
    {KX_E_FILE, " The file cannot be opened, read or written.", "文件无法打开、读取或写入。"},
    {KX_E_FILE_FORMAT, " The file has a wrong format.", "文件格式错误。"},
    {KX_E_DESCRIPTION, " The camera has no usable description file.", "相机没有可用的描述文件。"},
    {KX_E_INCOMPLETE, " Not every feature took its value.", "部分属性未能写入。"},
};

constexpr ErrorText kUnknown = {0, " An unknown error occurred.", "发生未知错误。"};

} // namespace

int SDKCode2VELACode(unsigned int status)
{
    return static_cast<int>(status);
}

QString GenerateSDKCode(unsigned int code)
{
    return QString::asprintf("[0x%08X]", code);
}

QString GenerateVELAErrorDesc(int code)
{
    const ErrorText* found = &kUnknown;
    for (const ErrorText& entry : kErrorTexts)
        if (entry.status == static_cast<KX_Status>(code))
            found = &entry;
    return QString::fromUtf8(language() == QLatin1String("CH") ? found->chinese : found->english);
}

} // namespace VELAInterface
