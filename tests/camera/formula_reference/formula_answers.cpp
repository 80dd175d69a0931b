// What the nodes make of formulas, for formula_reference_test.py. Without input: nothing but the table of
// where the reference implementation is not followed, as "formula TAB real TAB integer" of the reference.
// Then, for each line of the input, the same of the nodes.
#include "formula/Differences.h"
#include "formula/NumberMachine.h"

#include <cstdio>
#include <iostream>
#include <string>

namespace
{

using formula::NumberMachine;

std::string answer(const std::string& text, NumberMachine::Arithmetic arithmetic)
{
    try {
        const formula::Number number =
            NumberMachine(text, {}, arithmetic).evaluate([](std::size_t) { return formula::Number(); });
        if (number.isInteger())
            return std::to_string(number.asInteger());
        char buffer[40];
        std::snprintf(buffer, sizeof buffer, "%.17g", number.asReal());
        return buffer;
    } catch (const formula::FormulaError&) {
        return "error";
    }
}

} // namespace

int main()
{
    for (const formula::ReferenceDifference& row : formula::referenceDifferences)
        std::cout << row.formula << '\t' << row.referenceReal << '\t' << row.referenceInteger << '\n';
    for (std::string text; std::getline(std::cin, text);)
        std::cout << text << '\t' << answer(text, NumberMachine::Arithmetic::Real) << '\t'
                  << answer(text, NumberMachine::Arithmetic::Integer) << '\n';
    return 0;
}
