// A formula, by both machines. Any text ends in a number or a fault; one that is made of what both work out
// alike ends in the same number.
#include "formula/DoubleMachine.h"
#include "formula/NumberMachine.h"
#include "fuzz/Fuzz.h"

#include <cmath>
#include <iterator>
#include <optional>

namespace
{

using formula::NumberMachine;

std::optional<double> byNodes(const std::string& text, NumberMachine::Arithmetic arithmetic)
{
    static const formula::Scope scope = {{"A", "B", "SIN"},
                                         {{"PART", "(A+B)*2"}, {"LOOP", "LOOP+1"}, {"CONST", "0x10"}}};
    try {
        const NumberMachine machine(text, scope, arithmetic);
        const formula::Number result = machine.evaluate([](size_t variable) {
            return formula::Number::ofInteger(static_cast<int64_t>(variable) * 7 - 3);
        });
        return result.asReal();
    } catch (const formula::FormulaError& error) {
        fuzz::promise(!error.text.empty(), "an error says what it is");
        return std::nullopt;
    }
}

void anyText(const std::string& text)
{
    byNodes(text, NumberMachine::Arithmetic::Integer);
    byNodes(text, NumberMachine::Arithmetic::Real);
    const formula::DoubleResult result = formula::calculate(text);
    if (result.fault.kind == formula::Fault::Kind::None)
        fuzz::promise(std::isfinite(result.value), "a result is finite");
    else
        fuzz::promise(result.fault.position <= text.size(), "a fault lies in the text");
}

// Whole parentheses, so that levels play no part; reals, with neither bits nor remainders.
class Writer
{
public:
    explicit Writer(fuzz::Input& input) : m_input(input) {}

    std::string expression(unsigned depth)
    {
        static const char* const twos[] = {
            "+", "-", "*", "/", "**", "<", "<=", ">", ">=", "=", "<>", "&&", "||"};
        static const char* const ones[] = {"ABS",  "SGN", "NEG", "ATAN", "COS",  "SIN",   "TAN",   "ASIN",
                                           "ACOS", "EXP", "LN",  "LG",   "SQRT", "TRUNC", "FLOOR", "CEIL"};
        const unsigned choice = depth == 0 ? 0 : m_input.byte() % 8u;
        if (choice < 2)
            return number();
        if (choice < 5) {
            const char* sign = twos[m_input.byte() % std::size(twos)];
            const std::string left = expression(depth - 1);
            return "(" + left + ")" + sign + "(" + expression(depth - 1) + ")";
        }
        if (choice < 7) {
            const char* name = ones[m_input.byte() % std::size(ones)];
            return std::string(name) + "(" + expression(depth - 1) + ")";
        }
        const std::string condition = expression(depth - 1);
        const std::string then = expression(depth - 1);
        return "(" + condition + ")?(" + then + "):(" + expression(depth - 1) + ")";
    }

private:
    // With a point, so that the nodes' machine counts in reals as well.
    std::string number()
    {
        const std::string whole = std::to_string(m_input.number(1 + m_input.byte() % 3));
        return whole + "." + std::to_string(m_input.byte() % 100);
    }

    fuzz::Input& m_input;
};

// Infinity on the way is a fault to the one, and a number to the other.
void alike(const std::string& text)
{
    const formula::DoubleResult suite = formula::calculate(text);
    const std::optional<double> nodes = byNodes(text, NumberMachine::Arithmetic::Real);
    if (suite.fault.kind == formula::Fault::Kind::NotFinite)
        return;
    const bool isNumber = suite.fault.kind == formula::Fault::Kind::None;
    if (isNumber != nodes.has_value() || (isNumber && suite.value != *nodes)) {
        std::fprintf(stderr, "%s\n%.17g (%d) and %.17g (%d)\n", text.c_str(), suite.value, isNumber,
                     nodes.value_or(0), nodes.has_value());
        fuzz::promise(false, "both machines work it out alike");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    anyText(std::string(reinterpret_cast<const char*>(data), size));
    fuzz::Input input(data, size);
    alike(Writer(input).expression(4));
    return 0;
}
