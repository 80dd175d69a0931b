// The dialog that asks for a folder.
#pragma once

#include "StyledCtl.h"

#include <QFileDialog>

namespace ORBCustom
{

// Asks for one folder; empty when the user chose none. Blocks in a modal dialog. A start directory that is a
// file stands for the folder it lies in.
STYLEDCTL_API QString getExistingDirectory(QWidget* parent, const QString& caption, const QString& directory,
                                           QFileDialog::Options options);

} // namespace ORBCustom
