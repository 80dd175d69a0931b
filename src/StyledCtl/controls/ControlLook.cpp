#include "StyledCtl/controls/ControlLook.h"

#include "StyledCtl/style/Theme.h"

#include <StyledCtl/StyledCtl.h>

#include <QAbstractButton>

namespace styled
{

// A button knows best when it is down: by mouse, by keyboard or because it stays down.
int statusOf(const QAbstractButton* button)
{
    if (!button->isEnabled())
        return ORBCustom::StatusDisabled;
    if (button->isDown())
        return ORBCustom::StatusPressed;
    return button->underMouse() ? ORBCustom::StatusHover : ORBCustom::StatusNormal;
}

QColor ownTextColor(const QWidget* widget)
{
    return themeColor(widget->isEnabled() ? "text" : "textDisabled");
}

} // namespace styled
