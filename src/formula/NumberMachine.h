// Formulas of a camera's nodes: 64-bit integers and reals, variables, named parts.
#pragma once

#include "formula/Grammar.h"
#include "formula/Number.h"

#include <functional>
#include <string>

namespace formula
{

struct FormulaError
{
    std::string text;
};

class NumberMachine
{
public:
    enum class Arithmetic
    {
        Integer, // 5/2 is 2; a result that does not fit 64 bits is an error
        Real     // 5/2 is 2.5; & | ^ ~ << >> work on 32 bits with a sign
    };

    // Parsed once, evaluated often. Throws FormulaError for what is no formula, uses an undeclared name, or
    // is beyond the bounds of parse().
    NumberMachine(std::string_view text, const Scope& scope, Arithmetic arithmetic);

    // `variable` gives the value of scope.variables[i]. Throws FormulaError for a division by zero and for a
    // result that is no number, and passes on what `variable` throws. ?: && || ask for variables only where
    // they need to. The thread's stack is used for one call, however long the formula is.
    Number evaluate(const std::function<Number(std::size_t)>& variable) const;

private:
    Arithmetic m_arithmetic;
    Program m_program;
};

} // namespace formula
