#include <StyledCtl/ExistingDirectory.h>

#include "StyledCtl/dialogs/HookCall.h"

#include <QFileInfo>

namespace ORBCustom
{

QString getExistingDirectory(QWidget* parent, const QString& caption, const QString& directory,
                             QFileDialog::Options options)
{
    DialogRequest request;
    request.kind = DialogRequest::ExistingDirectory;
    request.parent = parent;
    request.title = caption;
    request.text = directory;
    const DialogAnswer answer = styled::askHook(request);
    if (answer.answered)
        return answer.path;
    // The dialog would take a file for what is chosen already, and then refuse it.
    const QFileInfo start(directory);
    return QFileDialog::getExistingDirectory(parent, caption, start.isFile() ? start.path() : directory,
                                             options);
}

} // namespace ORBCustom
