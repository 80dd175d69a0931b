#include "iefeatures/line/InventoryText.h"

#include "iefeatures/console/Text.h"

#include <algorithm>

namespace companion
{
namespace
{

const QByteArray kByteOrderMark = "\xEF\xBB\xBF";

bool isInsideCharacter(char byte)
{
    return (byte & 0xC0) == 0x80; // UTF-8, a byte that is not the first
}

} // namespace

TextPlaces::TextPlaces(const QByteArray& text) : m_text(text)
{
    m_lines.push_back(text.startsWith(kByteOrderMark) ? kByteOrderMark.size() : 0);
    for (int at = text.indexOf('\n'); at >= 0; at = text.indexOf('\n', at + 1))
        m_lines.push_back(at + 1);
}

int TextPlaces::offset(uint32_t line, uint32_t column) const
{
    if (line == 0 || line > m_lines.size())
        return m_text.size();
    int at = m_lines[line - 1];
    for (uint32_t passed = 1; passed < column && at < m_text.size(); ++passed) {
        ++at;
        while (at < m_text.size() && isInsideCharacter(m_text[at]))
            ++at;
    }
    return at;
}

QByteArray tomlText(const QString& text)
{
    return ('"' + escapedText(text).replace('"', "\\\"") + '"').toUtf8();
}

QByteArray tomlValue(const InventoryValue& value)
{
    if (const auto* text = std::get_if<QString>(&value))
        return tomlText(*text);
    if (const auto* isOn = std::get_if<bool>(&value))
        return *isOn ? "true" : "false";
    QByteArrayList parts;
    for (const QString& text : std::get<QStringList>(value))
        parts += tomlText(text);
    return '[' + parts.join(", ") + ']';
}

QByteArray tomlHead(const QString& camera)
{
    return "[camera." + tomlText(camera) + ']';
}

} // namespace companion
