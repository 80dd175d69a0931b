#pragma once

class QDialog;
class QKeyEvent;

namespace styled
{

// What the keys of a dialog with an OK button do wherever the focus is: Escape rejects, Enter accepts. False
// for any other key.
bool closeByKey(QDialog* dialog, const QKeyEvent* event);

} // namespace styled
