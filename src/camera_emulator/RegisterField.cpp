#include "camera_emulator/Description.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace emu
{
namespace
{

uint64_t readNumber(const RegisterField& field, const Memory& memory)
{
    Bytes bytes = memory.read(field.address, field.length);
    if (!field.bigEndian)
        std::reverse(bytes.begin(), bytes.end());
    uint64_t value = 0;
    for (uint8_t byte : bytes)
        value = value << 8 | byte;
    return value;
}

void writeNumber(const RegisterField& field, uint64_t value, Memory& memory)
{
    Bytes bytes(field.length);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[bytes.size() - 1 - i] = static_cast<uint8_t>(value >> (8 * i));
    if (!field.bigEndian)
        std::reverse(bytes.begin(), bytes.end());
    memory.write(field.address, bytes);
}

std::string encodeInteger(const RegisterField& field, int64_t value, Memory& memory)
{
    const unsigned bits = field.highBit - field.lowBit + 1;
    // Both readings of the bits are taken: -1 and 255 fill one byte alike.
    if (bits < 64 && (value < -(int64_t(1) << (bits - 1)) || value >= int64_t(1) << bits))
        return "takes " + std::to_string(bits) + " bits, too few for " + std::to_string(value);
    const uint64_t mask = (bits < 64 ? (uint64_t(1) << bits) - 1 : ~uint64_t(0)) << field.lowBit;
    const uint64_t shifted = static_cast<uint64_t>(value) << field.lowBit;
    writeNumber(field, (readNumber(field, memory) & ~mask) | (shifted & mask), memory);
    return {};
}

std::string encodeFloat(const RegisterField& field, double value, Memory& memory)
{
    uint64_t bits = 0;
    if (field.length == 4) {
        const auto narrow = static_cast<float>(value);
        uint32_t word = 0;
        std::memcpy(&word, &narrow, 4);
        bits = word;
    } else {
        std::memcpy(&bits, &value, 8);
    }
    writeNumber(field, bits, memory);
    return {};
}

std::string encodeText(const RegisterField& field, const std::string& text, Memory& memory)
{
    if (field.length != 0 && text.size() > field.length)
        return "takes " + std::to_string(field.length) + " bytes, too few for \"" + text + "\"";
    Bytes bytes(field.length ? field.length : text.size() + 1);
    std::copy(text.begin(), text.end(), bytes.begin());
    memory.write(field.address, bytes);
    return {};
}

} // namespace

std::string encode(const RegisterField& field, const NodeValue& value, Memory& memory)
{
    const auto* text = std::get_if<std::string>(&value);
    if (field.kind == RegisterField::Kind::Text)
        return text ? encodeText(field, *text, memory) : "is a text, not a number";
    if (text)
        return "is a number, not \"" + *text + "\"";
    const auto* integer = std::get_if<int64_t>(&value);
    const double number = integer ? static_cast<double>(*integer) : std::get<double>(value);
    if (field.kind == RegisterField::Kind::Float)
        return encodeFloat(field, number, memory);
    if (integer)
        return encodeInteger(field, *integer, memory);
    if (number != std::floor(number) || std::fabs(number) > 9e15)
        return "is an integer, not " + std::to_string(number);
    return encodeInteger(field, static_cast<int64_t>(number), memory);
}

NodeValue decode(const RegisterField& field, const Memory& memory)
{
    if (field.kind == RegisterField::Kind::Text) {
        const Bytes bytes = memory.read(field.address, field.length ? field.length : 512);
        return std::string(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
    }
    const uint64_t raw = readNumber(field, memory);
    if (field.kind == RegisterField::Kind::Float) {
        if (field.length == 8) {
            double wide = 0;
            std::memcpy(&wide, &raw, 8);
            return wide;
        }
        const auto word = static_cast<uint32_t>(raw);
        float narrow = 0;
        std::memcpy(&narrow, &word, 4);
        return static_cast<double>(narrow);
    }
    const unsigned bits = field.highBit - field.lowBit + 1;
    uint64_t value = raw >> field.lowBit;
    if (bits < 64) {
        value &= (uint64_t(1) << bits) - 1;
        if (field.isSigned && value >> (bits - 1) != 0)
            value |= ~uint64_t(0) << bits;
    }
    return static_cast<int64_t>(value);
}

} // namespace emu
