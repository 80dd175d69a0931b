// Typed access to the features that a description tells of.
#pragma once

#include "KXCameraControl/nodes/RegisterLine.h"

#include <KXCameraControl/KXCameraControl.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kx
{

class NodeTable;

// Not thread-safe; the owner holds its lock around every call. No exception leaves it but std::bad_alloc.
class NodeMap
{
public:
    // `line` must outlive the map. With `readOnly` nothing is written; access modes stay the camera's own.
    // The table may be shared with other maps on other threads; over an empty one every name is unknown.
    NodeMap(std::shared_ptr<const NodeTable> table, RegisterLine& line, bool readOnly);
    ~NodeMap();

    // Statuses as the C functions of the same names tell them.
    KX_Status getBool(const char* name, bool& value);
    KX_Status getEnum(const char* name, KX_EnumValue& value);
    KX_Status getFloat(const char* name, KX_FloatValue& value);
    KX_Status getInteger(const char* name, KX_IntegerValue& value);
    KX_Status incrementOrigin(const char* name, int64_t& origin);
    KX_Status getString(const char* name, KX_StringValue& value);
    KX_Status setBool(const char* name, bool value);
    KX_Status setEnum(const char* name, uint32_t value);
    KX_Status setFloat(const char* name, float value);
    KX_Status setInteger(const char* name, int64_t value);
    KX_Status setString(const char* name, const char* value);
    KX_Status execute(const char* name);
    KX_Status accessMode(const char* name, KX_XML_AccessMode& mode);
    bool isReadOnly() const;
    // Of the line, as it stands there.
    KX_Status readMemory(uint64_t address, void* data, size_t size);
    KX_Status writeMemory(uint64_t address, const void* data, size_t size);
    // From the description alone.
    KX_Status entryName(const char* name, uint32_t value, std::string& text);
    KX_Status isEverWritable(const char* name, bool& writable);
    // `relation`: a KX_Relation.
    KX_Status relatedNames(const char* name, uint32_t relation, std::vector<std::string>& names);
    KX_Status registerCoverage(uint64_t address, uint64_t length, KX_RegisterCoverage& coverage);
    KX_Status registerNames(uint64_t address, uint64_t length, std::vector<std::string>& names);

    // The features as texts, for feature files: integers in decimal, floats in the shortest form that reads
    // back, "1" and "0", entry names, strings as they are. Writing takes hexadecimal integers and entries'
    // numbers too.
    KX_Status getText(const char* name, std::string& text);
    KX_Status setText(const char* name, const std::string& text);
    bool has(const std::string& name) const;
    // Features of the categories that are marked as streamable, in the description's order.
    std::vector<std::string> streamableFeatures() const;
    std::vector<std::string> selectors() const;
    std::vector<std::string> selectedFeatures(const std::string& selector) const;
    // What a selector can be set to now; empty when that is more than `limit` (`isMore`), or when it cannot
    // be told.
    KX_Status selectorValues(const char* selector, size_t limit, std::vector<std::string>& values,
                             bool& isMore);

    // What the last failing call had to say beyond its status.
    const std::string& lastError() const { return m_lastError; }

private:
    class Nodes;
    template <class Body>
    KX_Status guarded(Body body);

    std::unique_ptr<Nodes> m_nodes;
    std::string m_lastError;
};

} // namespace kx
