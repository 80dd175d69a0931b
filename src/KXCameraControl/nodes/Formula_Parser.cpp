// From a formula's text to steps.
#include "KXCameraControl/nodes/Formula.h"
#include "KXCameraControl/nodes/FormulaFunctions.h"

#include <algorithm>
#include <charconv>

namespace kx
{

class FormulaParser
{
public:
    FormulaParser(Formula& formula, const Formula::Scope& scope, unsigned depth)
        : m_formula(formula), m_scope(scope), m_depth(depth)
    {}

    size_t parse(std::string_view text)
    {
        m_text = text;
        m_at = 0;
        const size_t root = choice();
        if (skipSpace(); m_at != m_text.size())
            throw FormulaError{"\"" + std::string(m_text.substr(m_at, 20)) + "\" is not expected"};
        return root;
    }

private:
    using Operation = Formula::Operation;
    static constexpr unsigned maximumDepth = 2000;
    static constexpr size_t maximumSteps = 100000; // named parts may be used, and so copied, many times

    struct Binary
    {
        std::string_view sign;
        int level; // a higher one binds tighter
        Operation operation;
    };

    // The longer signs first.
    static constexpr Binary binaries[] = {
        {"||", 1, Operation::Or},          {"&&", 2, Operation::And},
        {"**", 11, Operation::Power},      {"<<", 8, Operation::ShiftLeft},
        {">>", 8, Operation::ShiftRight},  {"<>", 6, Operation::NotEqual},
        {"<=", 7, Operation::LessOrEqual}, {">=", 7, Operation::GreaterOrEqual},
        {"|", 3, Operation::BitOr},        {"^", 4, Operation::BitXor},
        {"&", 5, Operation::BitAnd},       {"=", 6, Operation::Equal},
        {"<", 7, Operation::Less},         {">", 7, Operation::Greater},
        {"+", 9, Operation::Add},          {"-", 9, Operation::Subtract},
        {"*", 10, Operation::Multiply},    {"/", 10, Operation::Divide},
        {"%", 10, Operation::Remainder},
    };

    // Guards the thread's stack: every way down passes through one of these.
    struct Level
    {
        explicit Level(unsigned& counter) : m_counter(counter)
        {
            if (++m_counter > maximumDepth)
                throw FormulaError{"it is nested too deeply"};
        }
        ~Level() { --m_counter; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

    private:
        unsigned& m_counter;
    };

    size_t add(Operation operation, size_t first = noOperand, size_t second = noOperand,
               size_t third = noOperand)
    {
        if (m_formula.m_steps.size() >= maximumSteps)
            throw FormulaError{"it is too long"};
        Formula::Step step;
        step.operation = operation;
        step.operands[0] = first;
        step.operands[1] = second;
        step.operands[2] = third;
        for (const size_t operand : {first, second, third}) {
            if (operand != noOperand)
                step.height = std::max(step.height, m_formula.m_steps[operand].height + 1);
        }
        // Evaluation is recursive: a long sum is as deep as it is long.
        if (step.height > maximumDepth)
            throw FormulaError{"it is too long"};
        m_formula.m_steps.push_back(step);
        return m_formula.m_steps.size() - 1;
    }

    size_t addLiteral(const Number& number)
    {
        const size_t step = add(Operation::Literal);
        m_formula.m_steps[step].literal = number;
        return step;
    }

    void skipSpace()
    {
        while (m_at < m_text.size() &&
               std::string_view(" \t\r\n").find(m_text[m_at]) != std::string_view::npos)
            ++m_at;
    }

    bool take(std::string_view sign)
    {
        skipSpace();
        if (m_text.compare(m_at, sign.size(), sign) != 0)
            return false;
        m_at += sign.size();
        return true;
    }

    void expect(std::string_view sign)
    {
        if (!take(sign))
            throw FormulaError{"\"" + std::string(sign) + "\" is missing"};
    }

    size_t choice()
    {
        const Level level(m_depth);
        const size_t condition = operators(1);
        if (!take("?"))
            return condition;
        const size_t yes = choice();
        expect(":");
        const size_t no = choice();
        return add(Operation::Choose, condition, yes, no);
    }

    const Binary* nextBinary()
    {
        skipSpace();
        for (const Binary& binary : binaries) {
            if (m_text.compare(m_at, binary.sign.size(), binary.sign) == 0)
                return &binary;
        }
        return nullptr;
    }

    size_t operators(int lowest)
    {
        const Level level(m_depth);
        size_t left = unary();
        while (const Binary* binary = nextBinary()) {
            if (binary->level < lowest)
                break;
            m_at += binary->sign.size();
            const bool rightFirst = binary->operation == Operation::Power;
            const size_t right = operators(rightFirst ? binary->level : binary->level + 1);
            left = add(binary->operation, left, right);
        }
        return left;
    }

    size_t unary()
    {
        const Level level(m_depth);
        if (take("-"))
            return add(Operation::Negate, unary());
        if (take("+"))
            return unary();
        if (take("~"))
            return add(Operation::Complement, unary());
        return primary();
    }

    size_t primary()
    {
        if (take("(")) {
            const size_t inner = choice();
            expect(")");
            return inner;
        }
        if (m_at == m_text.size())
            throw FormulaError{"an operand is missing"};
        const char c = m_text[m_at];
        return isDigit(c) || c == '.' ? number() : name();
    }

    static bool isDigit(char c) { return c >= '0' && c <= '9'; }
    static bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

    size_t number();
    size_t hexadecimal();
    size_t name();
    size_t functionCall(size_t function);

    Formula& m_formula;
    const Formula::Scope& m_scope;
    unsigned m_depth;
    std::string_view m_text;
    size_t m_at = 0;
};

// A 64-bit pattern: 0xFFFFFFFFFFFFFFFF is -1, as in the registers that formulas work on.
size_t FormulaParser::hexadecimal()
{
    m_at += 2;
    uint64_t value = 0;
    const size_t start = m_at;
    for (; m_at < m_text.size(); ++m_at) {
        const char c = m_text[m_at];
        const std::string_view digits = "0123456789abcdef";
        const size_t digit = digits.find(c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c);
        if (digit == std::string_view::npos)
            break;
        if (value >> 60 != 0)
            throw FormulaError{"a number does not fit 64 bits"};
        value = value << 4 | digit;
    }
    if (m_at == start)
        throw FormulaError{"a number has no digits"};
    return addLiteral(Number::ofInteger(static_cast<int64_t>(value)));
}

size_t FormulaParser::number()
{
    if (m_text.compare(m_at, 2, "0x") == 0 || m_text.compare(m_at, 2, "0X") == 0)
        return hexadecimal();
    const size_t start = m_at;
    const auto skipDigits = [this] {
        while (m_at < m_text.size() && isDigit(m_text[m_at]))
            ++m_at;
    };
    skipDigits();
    bool isReal = m_at < m_text.size() && m_text[m_at] == '.';
    if (isReal) {
        ++m_at;
        skipDigits();
    }
    // An E that no exponent follows is not part of the number.
    if (m_at < m_text.size() && (m_text[m_at] == 'e' || m_text[m_at] == 'E')) {
        const bool isSigned =
            m_at + 1 < m_text.size() && (m_text[m_at + 1] == '+' || m_text[m_at + 1] == '-');
        const size_t digits = m_at + (isSigned ? 2 : 1);
        if (digits < m_text.size() && isDigit(m_text[digits])) {
            isReal = true;
            m_at = digits;
            skipDigits();
        }
    }
    const char* const first = m_text.data() + start;
    const char* const last = m_text.data() + m_at;
    int64_t integer = 0;
    if (!isReal && std::from_chars(first, last, integer).ec == std::errc())
        return addLiteral(Number::ofInteger(integer));
    double real = 0;
    if (std::from_chars(first, last, real).ec != std::errc())
        throw FormulaError{"\"" + std::string(first, last) + "\" is no number"};
    return addLiteral(Number::ofReal(real));
}

size_t FormulaParser::name()
{
    const size_t start = m_at;
    if (!isLetter(m_text[m_at]))
        throw FormulaError{"\"" + std::string(m_text.substr(m_at, 1)) + "\" is not expected"};
    while (m_at < m_text.size() && (isLetter(m_text[m_at]) || isDigit(m_text[m_at]) || m_text[m_at] == '.'))
        ++m_at;
    const std::string word(m_text.substr(start, m_at - start));
    const size_t function = functionIndex(word);
    if (function != noFunction && take("("))
        return functionCall(function);
    for (size_t i = 0; i < m_scope.variables.size(); ++i) {
        if (m_scope.variables[i] != word)
            continue;
        const size_t step = add(Operation::Variable);
        m_formula.m_steps[step].index = i;
        return step;
    }
    const auto expression = m_scope.expressions.find(word);
    if (expression != m_scope.expressions.end()) {
        const Level level(m_depth);
        return FormulaParser(m_formula, m_scope, m_depth).parse(expression->second);
    }
    if (word == "PI")
        return addLiteral(Number::ofReal(3.14159265358979323846));
    if (word == "E")
        return addLiteral(Number::ofReal(2.71828182845904523536));
    throw FormulaError{"\"" + word + "\" is unknown"};
}

size_t FormulaParser::functionCall(size_t function)
{
    const size_t argument = choice();
    size_t digits = noOperand;
    if (function == Round && take(","))
        digits = choice();
    expect(")");
    const size_t step = add(Operation::Function, argument, digits);
    m_formula.m_steps[step].index = function;
    return step;
}

Formula::Formula(std::string_view text, const Scope& scope, Arithmetic arithmetic) : m_arithmetic(arithmetic)
{
    m_root = FormulaParser(*this, scope, 0).parse(text);
}

} // namespace kx
