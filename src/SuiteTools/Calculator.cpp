#include "SuiteTools/SuiteTools.h"

#include "formula/DoubleMachine.h"

#include <exception>
#include <mutex>
#include <string>

namespace VELAInterface
{

namespace
{

std::string at(const formula::Fault& fault)
{
    return " at character " + std::to_string(fault.position + 1);
}

std::string textOf(const formula::Fault& fault)
{
    using Kind = formula::Fault::Kind;
    switch (fault.kind) {
    case Kind::Empty:
        return "the formula is empty";
    case Kind::ValueMissingAtEnd:
        return "a value is missing at the end";
    case Kind::ValueMissing:
    case Kind::NoNumber:
    case Kind::NoDigits:
        return "a value is missing" + at(fault);
    case Kind::OperatorMissing:
        return "an operator is missing" + at(fault);
    case Kind::ParenthesisMissing:
        return "')' is missing";
    case Kind::ParenthesisNotOpened:
        return "')' without '('";
    case Kind::ColonMissing:
        return "':' is missing behind '?'";
    case Kind::ColonWithoutQuestion:
        return "':' without '?'";
    case Kind::SecondArgument:
        return "',' where no second argument is known";
    case Kind::NumberRunsOn:
        return "malformed number" + at(fault);
    case Kind::NumberTooLarge:
    case Kind::PatternTooLarge:
        return "number too large" + at(fault);
    case Kind::UnknownName:
        return "unknown name '" + std::string(fault.rest.substr(0, 40)) + "'" + at(fault);
    case Kind::CallWithoutParenthesis:
        return "'(' is missing behind " + std::string(fault.rest) + at(fault);
    case Kind::ArgumentOfConstant:
        return std::string(fault.rest) + " takes no argument" + at(fault);
    case Kind::TooDeep:
        return "parentheses are nested too deeply";
    case Kind::DivisionByZero:
        return "division by zero";
    case Kind::ShiftCount:
        return "the shift count is not in 0..63";
    case Kind::TooLarge:
        return "a number does not fit into 64 bits";
    case Kind::NotFinite:
        return "the value is not a finite number";
    case Kind::None:
    case Kind::TooLong: // the nodes' alone are, and their operands
    case Kind::TooLongTogether:
    case Kind::TooWide:
        break;
    }
    return {};
}

struct LastError
{
    std::mutex mutex;
    std::string text;
};

LastError& lastError()
{
    static LastError error;
    return error;
}

void keepError(std::string text)
{
    LastError& error = lastError();
    const std::lock_guard<std::mutex> lock(error.mutex);
    error.text.swap(text);
}

} // namespace

double Compute(const char* expression, bool& ok)
{
    ok = false;
    try {
        const formula::DoubleResult result = formula::calculate(expression ? expression : "");
        ok = result.fault.kind == formula::Fault::Kind::None;
        if (!ok)
            keepError(textOf(result.fault));
        return result.value;
    } catch (const std::exception&) {
        keepError("out of memory");
        return 0;
    }
}

QString GetCalculatorErro()
{
    LastError& error = lastError();
    const std::lock_guard<std::mutex> lock(error.mutex);
    return QString::fromStdString(error.text);
}

} // namespace VELAInterface
