#include "jobs/file/RegularFile.h"

#include "held_files/HeldFiles.h"
#include "jobs/file/WholeFile.h"

#include <QDir>
#include <QFileInfo>

namespace ie
{
namespace
{

const char kNoFile[] = "it is no regular file";

// Who has the file open and lets nobody else in?
DWORD holderOf(const QString& path)
{
    const QString native = QDir::toNativeSeparators(path);
    const HANDLE file = CreateFileW(reinterpret_cast<const wchar_t*>(native.utf16()), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION ? ERROR_SHARING_VIOLATION : ERROR_SUCCESS;
    CloseHandle(file);
    return ERROR_SUCCESS;
}

} // namespace

QString openRegular(QFile& file, QIODevice::OpenMode mode, LinkRule links)
{
    const QFileInfo about(file.fileName());
    if (!liesInFolder(about.fileName()) || (about.exists() && !about.isFile()))
        return kNoFile;
    if (links == LinkRule::Refused && about.isSymLink())
        return "it is a link";
    if (about.exists())
        held_files::retried([&] { return holderOf(file.fileName()); });
    return file.open(mode) ? QString() : causeOf(file);
}

QString causeOf(const QFileDevice& file)
{
    const QString text = file.errorString();
    return text.endsWith('.') ? text.chopped(1) : text;
}

} // namespace ie
