// A process-wide function that may answer in place of a dialog: for tests and for runs without a person.
#pragma once

#include "StyledCtl.h"

#include <QString>

#include <functional>

namespace ORBCustom
{

struct DialogRequest
{
    enum Kind
    {
        ExistingDirectory, // `text`: the start folder
        MessageBox,
        SaveDone,
        OpenFolder // the folder of `path` is about to be shown by the desktop
    };

    Kind kind = MessageBox;
    QWidget* parent = nullptr;
    QString title;
    QString text;
    QString detail;
    QString path;
    int hintIconStyle = 0; // message boxes
    bool flag =
        false; // message boxes: with a cancel button; save-done dialogs: with the box not to show it again
};

struct DialogAnswer
{
    bool answered = false; // false: show the dialog
    int result = 0;        // what exec() gives; opening a folder: not 0 for success
    QString path;          // the chosen folder
};

using DialogHook = std::function<DialogAnswer(const DialogRequest&)>;

// Replaces the hook; an empty one shows every dialog again.
STYLEDCTL_API void setDialogHook(DialogHook hook);

} // namespace ORBCustom
