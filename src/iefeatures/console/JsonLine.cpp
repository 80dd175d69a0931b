#include "iefeatures/console/JsonLine.h"

#include <QFileInfo>

namespace companion
{

std::string jsonLine(const std::string& command, const char* kind, const Json& fields)
{
    Json object = {{"format_version", kJsonFormat}, {"command", command}, {"kind", kind}};
    object.update(fields);
    return lineOf(object);
}

std::string lineOf(const Json& object)
{
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
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
