// Addresses, byte order and bits.
#include "KXCameraControl/nodes/Registers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace kx
{

namespace
{

constexpr size_t maximumTextRegister = 64 * 1024;

[[noreturn]] void cannot(const Node& node, const std::string& why)
{
    throw NodeFailure{KX_E_GC_RUNTIME, node.name + ": " + why + "."};
}

bool isBigEndian(const Node& node)
{
    const Property* order = node.find(Tag::Endianess);
    return order && order->text == "BigEndian";
}

uint64_t wordOf(const uint8_t* bytes, size_t size, bool bigEndian)
{
    uint64_t word = 0;
    for (size_t i = 0; i < size; ++i)
        word = word << 8 | bytes[bigEndian ? i : size - 1 - i];
    return word;
}

void bytesOf(uint64_t word, uint8_t* bytes, size_t size, bool bigEndian)
{
    for (size_t i = 0; i < size; ++i, word >>= 8)
        bytes[bigEndian ? size - 1 - i : i] = static_cast<uint8_t>(word);
}

uint64_t maskOf(unsigned bits)
{
    return bits >= 64 ? ~uint64_t{0} : (uint64_t{1} << bits) - 1;
}

} // namespace

bool isRegisterKind(NodeKind kind)
{
    switch (kind) {
    case NodeKind::IntReg:
    case NodeKind::MaskedIntReg:
    case NodeKind::StructEntry:
    case NodeKind::FloatReg:
    case NodeKind::StringReg:
    case NodeKind::Register:
        return true;
    default:
        return false;
    }
}

int64_t literalInteger(const Node& node, const Property& property)
{
    int64_t value = 0;
    if (parseInteger(property.text, value))
        return value;
    double real = 0;
    if (!parseReal(property.text, real) || !(std::fabs(real) < 9.2e18))
        cannot(node, "\"" + property.text + "\" is no integer");
    return static_cast<int64_t>(std::llround(real));
}

double literalReal(const Node& node, const Property& property)
{
    double value = 0;
    if (!parseReal(property.text, value))
        cannot(node, "\"" + property.text + "\" is no number");
    return value;
}

Registers::Registers(const NodeTable& table, RegisterLine& line, IntegerReader integerOf)
    : m_table(table), m_line(line), m_integerOf(std::move(integerOf))
{}

bool Registers::isInMemory(const Node& node)
{
    const Node* port = node.link(Tag::pPort);
    const bool isPlainPort = !port || (!port->find(Tag::ChunkID) && !port->find(Tag::pChunkID));
    return isPlainPort && !isEvent(node);
}

bool Registers::isEvent(const Node& node)
{
    const Node* port = node.link(Tag::pPort);
    return node.find(Tag::EventID) || (port && port->find(Tag::EventID));
}

// ---- where a register lies ----

int64_t Registers::length(const Node& node) const
{
    if (const Property* literal = node.find(Tag::Length))
        return literalInteger(node, *literal);
    if (const Node* source = node.link(Tag::pLength))
        return m_integerOf(*source);
    return 4;
}

// The sum of everything that is said about it. Sums wrap as addresses do; what lies outside the device is
// refused by the line.
uint64_t Registers::address(const Node& node) const
{
    uint64_t sum = 0;
    for (const Property& property : node.properties) {
        if (property.tag == Tag::Address) {
            sum += static_cast<uint64_t>(literalInteger(node, property));
        } else if (property.tag == Tag::pAddress) {
            sum += static_cast<uint64_t>(m_integerOf(*property.target));
        } else if (property.tag == Tag::pIndex) {
            int64_t offset = 0;
            if (property.offsetTarget)
                offset = m_integerOf(*property.offsetTarget);
            else if (property.attribute.empty())
                offset = length(node);
            else if (!parseInteger(property.attribute, offset))
                cannot(node, "\"" + property.attribute + "\" is no offset");
            sum += static_cast<uint64_t>(m_integerOf(*property.target)) * static_cast<uint64_t>(offset);
        }
    }
    return sum;
}

std::optional<RegisterPlace> Registers::place(const Node& node, size_t limit) const
{
    const int64_t size = length(node);
    const bool isText = node.kind == NodeKind::StringReg;
    if (size < 1 || (!isText && size > 8))
        return std::nullopt;
    const auto asked = static_cast<size_t>(isText ? std::min(static_cast<uint64_t>(size), uint64_t{limit})
                                                  : static_cast<uint64_t>(size));
    return RegisterPlace{address(node), asked, usesRegisterCommands(asked)};
}

size_t Registers::numberLength(const Node& node) const
{
    const int64_t size = length(node);
    if (size < 1 || size > 8)
        cannot(node, "a register of " + std::to_string(size) + " bytes holds no number");
    return static_cast<size_t>(size);
}

// Bit 0 is the lowest bit of a little-endian register and the highest one of a big-endian register. Numbers
// outside the register are taken within it.
Registers::Bits Registers::bits(const Node& node, size_t size) const
{
    const auto width = static_cast<int64_t>(8 * size);
    if (node.kind == NodeKind::IntReg)
        return {0, static_cast<unsigned>(width)};
    const bool bigEndian = isBigEndian(node);
    const auto place = [&](Tag tag, int64_t otherwise) {
        const Property* single = node.find(Tag::Bit);
        const Property* property = single ? single : node.find(tag);
        if (!property)
            return otherwise;
        const int64_t bit = ((literalInteger(node, *property) % width) + width) % width;
        return bigEndian ? width - 1 - bit : bit;
    };
    const int64_t first = place(Tag::LSB, 0);
    const int64_t last = place(Tag::MSB, width - 1);
    return {static_cast<unsigned>(std::min(first, last)), static_cast<unsigned>(std::abs(first - last) + 1)};
}

bool Registers::isSigned(const Node& node)
{
    const Property* sign = node.find(Tag::Sign);
    return sign && sign->text == "Signed";
}

IntegerLimits Registers::limits(const Node& node) const
{
    const unsigned count = bits(node, numberLength(node)).count;
    if (isSigned(node)) {
        const auto top = static_cast<int64_t>(maskOf(count - 1));
        return {-top - 1, top};
    }
    // An unsigned register of 64 bits goes beyond what an integer node can say.
    return {0, count >= 64 ? std::numeric_limits<int64_t>::max() : static_cast<int64_t>(maskOf(count))};
}

// ---- values ----

int64_t Registers::readInteger(const Node& node) const
{
    const size_t size = numberLength(node);
    const Bits place = bits(node, size);
    const uint64_t value = readWord(node, size) >> place.lowest & maskOf(place.count);
    const bool isNegative = isSigned(node) && (value >> (place.count - 1) & 1) != 0;
    return static_cast<int64_t>(isNegative ? value | ~maskOf(place.count) : value);
}

// The neighbours of a bit field are read afresh: what was read a moment ago may have changed in the camera.
// Where they cannot be read they are written as zeros.
void Registers::writeInteger(const Node& node, int64_t value) const
{
    const size_t size = numberLength(node);
    const Bits place = bits(node, size);
    uint64_t word = (static_cast<uint64_t>(value) & maskOf(place.count)) << place.lowest;
    const Property* mode = node.find(Tag::AccessMode);
    if (place.count < 8 * size && !(mode && mode->text == "WO")) {
        uint8_t bytes[8] = {};
        read(node, bytes, size, RegisterLine::Freshness::Wire);
        word |= wordOf(bytes, size, isBigEndian(node)) & ~(maskOf(place.count) << place.lowest);
    }
    writeWord(node, size, word);
}

double Registers::readFloat(const Node& node) const
{
    const size_t size = numberLength(node);
    if (size != 4 && size != 8)
        cannot(node, "a register of " + std::to_string(size) + " bytes holds no floating-point number");
    const uint64_t word = readWord(node, size);
    if (size == 8) {
        double value = 0;
        std::memcpy(&value, &word, sizeof value);
        return value;
    }
    const auto half = static_cast<uint32_t>(word);
    float value = 0;
    std::memcpy(&value, &half, sizeof value);
    return value;
}

void Registers::writeFloat(const Node& node, double value) const
{
    const size_t size = numberLength(node);
    uint64_t word = 0;
    if (size == 8) {
        std::memcpy(&word, &value, sizeof value);
    } else if (size == 4) {
        const auto narrow = static_cast<float>(value);
        uint32_t half = 0;
        std::memcpy(&half, &narrow, sizeof half);
        word = half;
    } else {
        cannot(node, "a register of " + std::to_string(size) + " bytes holds no floating-point number");
    }
    writeWord(node, size, word);
}

std::string Registers::readText(const Node& node, size_t limit) const
{
    const int64_t size = length(node);
    if (size < 0)
        cannot(node, "its length is " + std::to_string(size));
    std::string text(std::min(static_cast<uint64_t>(size), static_cast<uint64_t>(limit)), '\0');
    if (text.empty())
        return text;
    read(node, reinterpret_cast<uint8_t*>(text.data()), text.size(), freshness(node));
    text.resize(std::min(text.find('\0'), text.size()));
    return text;
}

void Registers::writeText(const Node& node, const std::string& text) const
{
    const int64_t size = length(node);
    if (size < 0 || text.size() > static_cast<uint64_t>(size))
        throw NodeFailure{KX_E_GC_ARGUMENT,
                          node.name + ": the text is longer than " + std::to_string(size) + " bytes."};
    if (size == 0)
        return;
    std::vector<uint8_t> bytes(
        std::min(static_cast<size_t>(size), std::max(maximumTextRegister, text.size())));
    std::memcpy(bytes.data(), text.data(), text.size());
    write(node, bytes.data(), bytes.size());
}

// ---- the line ----

uint64_t Registers::readWord(const Node& node, size_t size) const
{
    uint8_t bytes[8] = {};
    read(node, bytes, size, freshness(node));
    return wordOf(bytes, size, isBigEndian(node));
}

void Registers::writeWord(const Node& node, size_t size, uint64_t word) const
{
    uint8_t bytes[8] = {};
    bytesOf(word, bytes, size, isBigEndian(node));
    write(node, bytes, size);
}

// Descriptions before schema 1.1 count on the transport's register commands for what has their size.
bool Registers::usesRegisterCommands(size_t size) const
{
    return size == 4 && m_table.isOlderThan(1, 1);
}

// What the camera changes by itself, or says to ask again soon, serves no later call.
RegisterLine::Freshness Registers::freshness(const Node& node) const
{
    const Property* cachable = node.find(Tag::Cachable);
    const Property* polling = node.find(Tag::PollingTime);
    int64_t milliseconds = 0;
    const bool isPolled =
        polling && parseInteger(polling->text, milliseconds) && milliseconds < m_line.keepTime().count();
    const bool isVolatile = isPolled || (cachable && cachable->text == "NoCache");
    return isVolatile ? RegisterLine::Freshness::Call : RegisterLine::Freshness::Keep;
}

void Registers::read(const Node& node, uint8_t* data, size_t size, RegisterLine::Freshness freshness) const
{
    if (!isInMemory(node))
        throw NodeFailure{KX_E_GC_ACCESS,
                          node.name + ": it stands in chunk or event data, not in a register."};
    const uint64_t from = address(node);
    m_line.setFreshness(freshness);
    KX_Status status = KX_OK;
    if (usesRegisterCommands(size)) {
        uint32_t word = 0;
        status = m_line.readRegister(from, word);
        bytesOf(word, data, size, true);
    } else {
        status = m_line.readBlock(from, data, size);
    }
    if (status != KX_OK)
        lineFailed(node, status);
}

void Registers::write(const Node& node, const uint8_t* data, size_t size) const
{
    if (!isInMemory(node))
        throw NodeFailure{KX_E_GC_ACCESS,
                          node.name + ": it stands in chunk or event data, not in a register."};
    const uint64_t to = address(node);
    const KX_Status status = usesRegisterCommands(size)
                                 ? m_line.writeRegister(to, static_cast<uint32_t>(wordOf(data, size, true)))
                                 : m_line.writeBlock(to, data, size);
    if (status != KX_OK)
        lineFailed(node, status);
}

void Registers::lineFailed(const Node& node, KX_Status status) const
{
    throw NodeFailure{status, node.name + ": " + m_line.lineError()};
}

} // namespace kx
