// Formulas of the GenICam SwissKnife grammar, turned into steps.
//
// There are two dialects: the common library's, whose formulas hold numbers only, and the nodes', with
// variables and named parts. They share tokens, literals, functions and constants; each has a table of
// precedence of its own, and the nodes' reads their names in small letters too. What they do not share is
// told in Differences.h.
#pragma once

#include "formula/Program.h"

#include <functional>
#include <map>
#include <string>

namespace formula
{

enum class Dialect
{
    Suite,
    Nodes
};

// The names that a formula may use. A declared name hides a constant of the language (PI, E), and a function
// wherever no parenthesis follows.
struct Scope
{
    std::vector<std::string> variables;
    std::map<std::string, std::string, std::less<>> expressions; // named parts and constants, as formulas
    // Of this formula and others: characters that may still be read, those of a named part each time that it
    // is met. Counted down; null: any number.
    std::size_t* characters = nullptr;
};

struct Parsed
{
    Program program; // of no use unless `fault` is Kind::None
    Fault fault;
};

// Throws nothing but std::bad_alloc. Time and memory grow linearly with the text and the named parts in it;
// the thread's stack is not used for nesting. Bounds: the suite's formulas may open 10,000 parentheses and
// calls, however long they are; the nodes' ones may keep 2,000 signs, operators, parentheses and parts
// pending and have 100,000 steps, since named parts multiply.
Parsed parse(std::string_view text, Dialect dialect, const Scope& scope = {});

} // namespace formula
