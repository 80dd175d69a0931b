// What the buttons and boxes share of their looks.
#pragma once

class QAbstractButton;
class QColor;
class QWidget;

namespace styled
{

// An ORBCustom::ItemStatus.
int statusOf(const QAbstractButton* button);
// The theme's, as the widget is enabled or not.
QColor ownTextColor(const QWidget* widget);

} // namespace styled
