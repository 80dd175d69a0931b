#include "jobs/rules/BoundedText.h"

namespace ie
{

bool replaceBounded(QString& text, const QString& from, const QString& to)
{
    qint64 size = text.size();
    for (int at = text.indexOf(from); at >= 0; at = text.indexOf(from, at + from.size()))
        size += to.size() - from.size();
    if (size > kLongestFormula)
        return false;
    text.replace(from, to);
    return true;
}

} // namespace ie
