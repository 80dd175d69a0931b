#include "NodeMap.h"

namespace kx
{

class NodeMap::Engine
{
};

NodeMap::NodeMap(RegisterLine&, bool) {}
NodeMap::~NodeMap() = default;

bool NodeMap::load(const std::string&, std::string&)
{
    return false;
}

KX_Status NodeMap::getBool(const char*, bool&)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::getEnum(const char*, KX_EnumValue&)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::getFloat(const char*, KX_FloatValue&)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::getInteger(const char*, KX_IntegerValue&)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::getString(const char*, KX_StringValue&)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::setBool(const char*, bool)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::setEnum(const char*, uint32_t)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::setFloat(const char*, float)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::setInteger(const char*, int64_t)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::setString(const char*, const char*)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::execute(const char*)
{
    return KX_E_GC_PROPERTY;
}
KX_Status NodeMap::accessMode(const char*, KX_XML_AccessMode&)
{
    return KX_E_GC_PROPERTY;
}

} // namespace kx
