#include "formula/NumberMachine_Texts.h"

namespace formula
{

namespace
{

std::string quoted(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

// A text that goes on where it should end, or where a bracket should be closed.
std::string unexpected(const Fault& fault)
{
    if (fault.closing != 0)
        return quoted(std::string(1, fault.closing)) + " is missing";
    return quoted(fault.rest.substr(0, 20)) + " is not expected";
}

} // namespace

std::string textOf(const Fault& fault)
{
    switch (fault.kind) {
    case Fault::Kind::Empty:
    case Fault::Kind::ValueMissingAtEnd:
        return "an operand is missing";
    case Fault::Kind::ValueMissing:
        return quoted(fault.rest.substr(0, 1)) + " is not expected";
    case Fault::Kind::ParenthesisMissing:
        return "\")\" is missing";
    case Fault::Kind::ColonMissing:
        return "\":\" is missing";
    case Fault::Kind::NoNumber:
        return "\".\" is no number";
    case Fault::Kind::NoDigits:
        return "a number has no digits";
    case Fault::Kind::NumberTooLarge:
        return quoted(fault.rest) + " is no number";
    case Fault::Kind::PatternTooLarge:
        return "a number does not fit 64 bits";
    case Fault::Kind::UnknownName:
    case Fault::Kind::CallWithoutParenthesis:
        return quoted(fault.rest) + " is unknown";
    case Fault::Kind::TooDeep:
        return "it is nested too deeply";
    case Fault::Kind::TooLong:
        return "it is too long";
    case Fault::Kind::TooLongTogether:
        return "it and the formulas before it are too long together";
    case Fault::Kind::DivisionByZero:
        return "a division by zero";
    case Fault::Kind::ShiftCount:
        return "a shift by " + std::to_string(fault.count) + " bits";
    case Fault::Kind::TooLarge:
        return "a result does not fit 64 bits";
    case Fault::Kind::TooWide:
        return "an operand does not fit 32 bits";
    case Fault::Kind::NotFinite:
        return "the result is no number";
    default:
        return unexpected(fault);
    }
}

} // namespace formula
