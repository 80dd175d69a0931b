#include "StyledCtl/dialogs/DialogKeys.h"

#include <QDialog>
#include <QKeyEvent>

bool styled::closeByKey(QDialog* dialog, const QKeyEvent* event)
{
    const bool accepts = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (accepts)
        dialog->accept();
    else if (event->matches(QKeySequence::Cancel))
        dialog->reject();
    else
        return false;
    return true;
}
