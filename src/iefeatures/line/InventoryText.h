// What stands where in the text of an inventory, and how values are written there.
#pragma once

#include "iefeatures/line/Inventory.h"

#include <QByteArray>

#include <vector>

namespace companion
{

// Finds bytes by lines and columns, which count from 1; a column is a character, and a byte order mark is
// none.
class TextPlaces
{
public:
    explicit TextPlaces(const QByteArray& text); // which must outlive it
    int offset(uint32_t line, uint32_t column) const;

private:
    const QByteArray& m_text;
    std::vector<int> m_lines; // where they begin
};

// As TOML has them: texts in double quotes, with everything escaped that a terminal would act on.
QByteArray tomlText(const QString& text);
QByteArray tomlValue(const InventoryValue& value);
// The head of a camera's table, without an end of line.
QByteArray tomlHead(const QString& camera);

} // namespace companion
