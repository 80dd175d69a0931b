#include "iefeatures/console/JsonLine.h"

#include "iefeatures/console/Text.h"

#include <QFileInfo>

namespace companion
{
namespace
{

// "\u009B", of a character beyond 16 bits both of its units.
QString escaped(const QString& character)
{
    QString text;
    for (const QChar unit : character)
        text += QString("\\u%1").arg(unit.unicode(), 4, 16, QChar('0'));
    return text;
}

} // namespace

std::string jsonLine(const std::string& command, const char* kind, const Json& fields)
{
    Json object = {{"format_version", kJsonFormat}, {"command", command}, {"kind", kind}};
    object.update(fields);
    return lineOf(object);
}

// What a terminal would act on stands in texts alone, where JSON can write it otherwise.
std::string lineOf(const Json& object)
{
    const QString line = QString::fromStdString(object.dump(-1, ' ', false, Json::error_handler_t::replace));
    if (printable(line) == line)
        return line.toStdString() + '\n';
    QString harmless;
    for (const uint character : line.toUcs4()) {
        const QString text = QString::fromUcs4(&character, 1);
        harmless += actsOnTerminal(character) ? escaped(text) : text;
    }
    return harmless.toStdString() + '\n';
}

Json json(const QString& text)
{
    return text.toStdString();
}

Json json(const QStringList& texts)
{
    Json list = Json::array();
    for (const QString& text : texts)
        list.push_back(text.toStdString());
    return list;
}

Json jsonUnlessNull(const QString& text)
{
    return text.isNull() ? Json() : json(text);
}

Json jsonUnlessEmpty(const QString& text)
{
    return text.isEmpty() ? Json() : json(text);
}

Json jsonOfExisting(const QString& path)
{
    return QFileInfo::exists(path) ? json(path) : Json();
}

} // namespace companion
