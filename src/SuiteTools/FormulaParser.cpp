#include "FormulaParser.h"

#include "FormulaNumber.h"

#include <utility>

namespace VELAInterface::Formula
{

namespace
{

struct BinaryOperator
{
    std::string_view text;
    Operation operation;
    int precedence;
};

// Precedence as in C, with ** between the unary operators and the products: a substituted variable may be a
// negative number without parentheses, and "-2**2" must square it.
constexpr int kPrecedenceUnary = 13;
constexpr int kPrecedencePower = 12;
constexpr int kPrecedenceAnd = 2;
constexpr int kPrecedenceOr = 1;
constexpr int kPrecedenceConditional = 0;
constexpr int kPrecedenceNone = -1;

// A text that begins another one stands behind it.
constexpr BinaryOperator kBinaryOperators[] = {
    {"**", Operation::Power, kPrecedencePower},
    {"*", Operation::Multiply, 11},
    {"/", Operation::Divide, 11},
    {"%", Operation::Remainder, 11},
    {"+", Operation::Add, 10},
    {"-", Operation::Subtract, 10},
    {"<<", Operation::ShiftLeft, 9},
    {">>", Operation::ShiftRight, 9},
    {"<>", Operation::NotEqual, 7},
    {"<=", Operation::LessOrEqual, 8},
    {">=", Operation::GreaterOrEqual, 8},
    {"<", Operation::Less, 8},
    {">", Operation::Greater, 8},
    {"=", Operation::Equal, 7},
    {"&&", Operation::DecideAnd, kPrecedenceAnd},
    {"||", Operation::DecideOr, kPrecedenceOr},
    {"&", Operation::BitAnd, 6},
    {"^", Operation::BitXor, 5},
    {"|", Operation::BitOr, 4},
};

struct Function
{
    std::string_view name;
    Operation operation;
};

constexpr Function kFunctions[] = {
    {"ABS", Operation::Abs},   {"SGN", Operation::Sgn},     {"NEG", Operation::Negate},
    {"ATAN", Operation::Atan}, {"COS", Operation::Cos},     {"SIN", Operation::Sin},
    {"TAN", Operation::Tan},   {"ASIN", Operation::Asin},   {"ACOS", Operation::Acos},
    {"EXP", Operation::Exp},   {"LN", Operation::Ln},       {"LG", Operation::Lg},
    {"SQRT", Operation::Sqrt}, {"TRUNC", Operation::Trunc}, {"FLOOR", Operation::Floor},
    {"CEIL", Operation::Ceil}, {"ROUND", Operation::Round},
};

struct Constant
{
    std::string_view name;
    double value;
};

constexpr Constant kConstants[] = {{"E", 2.718281828459045235}, {"PI", 3.141592653589793238}};

template <typename Entry, std::size_t size>
const Entry* findByName(const Entry (&table)[size], std::string_view name)
{
    for (const Entry& entry : table)
        if (entry.name == name)
            return &entry;
    return nullptr;
}

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isNameStart(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

bool isNamePart(char c)
{
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '.';
}

// An operator, or an opened bracket, whose right side is still being read.
struct Pending
{
    enum class Kind
    {
        Operator,
        Decision, // && or ||
        Question,
        Colon,
        Parenthesis,
        Call
    };
    Kind kind;
    int precedence;
    Operation operation = Operation::Number; // of an operator, or of the called function
    std::size_t jump = 0;                    // the step whose target is not known yet
    bool hasComma = false;                   // of a call
};

// Operator precedence parsing with an explicit stack.
class Parser
{
public:
    explicit Parser(std::string_view text) : m_text(text) {}
    Program run();

private:
    void readOperand();
    void readName();
    void readNumber();
    void readOperator();
    void open(Pending::Kind kind, Operation operation);
    void close();
    void comma();
    void question();
    void colon();
    void binary(const BinaryOperator& op);
    void finish();

    // Completes what binds at least as tightly as `precedence`, back to the last bracket or "?".
    void reduce(int precedence);
    bool innermostIs(Pending::Kind kind) const { return !m_pending.empty() && m_pending.back().kind == kind; }

    std::size_t emit(Operation operation, double number = 0);
    void land(std::size_t jump) { m_program.steps[jump].target = m_program.steps.size(); }
    void skipBlanks();
    bool take(std::string_view token);
    void fail(const std::string& what);
    void failHere(const std::string& what) { fail(what + " at character " + std::to_string(m_position + 1)); }

    std::string_view m_text;
    std::size_t m_position = 0;
    bool m_operandExpected = true;
    std::size_t m_depth = 0;
    std::vector<Pending> m_pending;
    Program m_program;
};

Program Parser::run()
{
    skipBlanks();
    if (m_position == m_text.size())
        fail("the formula is empty");
    while (m_program.error.empty() && m_position < m_text.size()) {
        if (m_operandExpected)
            readOperand();
        else
            readOperator();
        skipBlanks();
    }
    if (m_program.error.empty())
        finish();
    return std::move(m_program);
}

void Parser::readOperand()
{
    if (take("("))
        open(Pending::Kind::Parenthesis, Operation::Number);
    else if (take("-"))
        m_pending.push_back({Pending::Kind::Operator, kPrecedenceUnary, Operation::Negate});
    else if (take("~"))
        m_pending.push_back({Pending::Kind::Operator, kPrecedenceUnary, Operation::Complement});
    else if (isNameStart(m_text[m_position]))
        readName();
    else if (!take("+"))
        readNumber();
}

void Parser::readName()
{
    std::size_t end = m_position;
    while (end < m_text.size() && isNamePart(m_text[end]))
        ++end;
    const std::string_view name = m_text.substr(m_position, end - m_position);
    const Function* function = findByName(kFunctions, name);
    const Constant* constant = findByName(kConstants, name);
    if (!function && !constant)
        return failHere("unknown name '" + std::string(name.substr(0, 40)) + "'");
    m_position = end;
    skipBlanks();
    if (function && !take("("))
        return failHere("'(' is missing behind " + std::string(name));
    if (function)
        return open(Pending::Kind::Call, function->operation);
    emit(Operation::Number, constant->value);
    m_operandExpected = false;
    if (take("(")) { // PI and PI() are both in use
        skipBlanks();
        if (!take(")"))
            failHere(std::string(name) + " takes no argument");
    }
}

void Parser::readNumber()
{
    const NumberToken token = scanNumber(m_text.substr(m_position));
    if (token.length == 0)
        return failHere("a value is missing");
    const std::size_t end = m_position + token.length;
    if (end < m_text.size() && isNamePart(m_text[end]))
        return failHere("malformed number");
    if (!token.fits)
        return failHere("number too large");
    m_position = end;
    emit(Operation::Number, token.value);
    m_operandExpected = false;
}

void Parser::readOperator()
{
    if (take(")"))
        return close();
    if (take(","))
        return comma();
    if (take("?"))
        return question();
    if (take(":"))
        return colon();
    for (const BinaryOperator& op : kBinaryOperators)
        if (take(op.text))
            return binary(op);
    failHere("an operator is missing");
}

void Parser::open(Pending::Kind kind, Operation operation)
{
    if (++m_depth > kMaximumDepth)
        return fail("parentheses are nested too deeply");
    m_pending.push_back({kind, kPrecedenceNone, operation});
}

void Parser::close()
{
    reduce(kPrecedenceConditional);
    if (innermostIs(Pending::Kind::Call))
        emit(m_pending.back().hasComma ? Operation::RoundToDigits : m_pending.back().operation);
    else if (innermostIs(Pending::Kind::Question))
        return fail("':' is missing behind '?'");
    else if (m_pending.empty())
        return fail("')' without '('");
    m_pending.pop_back();
    --m_depth;
}

void Parser::comma()
{
    reduce(kPrecedenceConditional);
    if (!innermostIs(Pending::Kind::Call) || m_pending.back().operation != Operation::Round ||
        m_pending.back().hasComma)
        return fail("',' where no second argument is known");
    m_pending.back().hasComma = true;
    m_operandExpected = true;
}

void Parser::question()
{
    reduce(kPrecedenceConditional + 1);
    m_pending.push_back(
        {Pending::Kind::Question, kPrecedenceNone, Operation::JumpUnless, emit(Operation::JumpUnless)});
    m_operandExpected = true;
}

void Parser::colon()
{
    reduce(kPrecedenceConditional);
    if (!innermostIs(Pending::Kind::Question))
        return fail("':' without '?'");
    const std::size_t toElse = m_pending.back().jump;
    m_pending.back() = {Pending::Kind::Colon, kPrecedenceConditional, Operation::Jump, emit(Operation::Jump)};
    land(toElse);
    m_operandExpected = true;
}

void Parser::binary(const BinaryOperator& op)
{
    const bool rightToLeft = op.operation == Operation::Power;
    reduce(rightToLeft ? op.precedence + 1 : op.precedence);
    if (op.operation == Operation::DecideAnd || op.operation == Operation::DecideOr)
        m_pending.push_back({Pending::Kind::Decision, op.precedence, op.operation, emit(op.operation)});
    else
        m_pending.push_back({Pending::Kind::Operator, op.precedence, op.operation});
    m_operandExpected = true;
}

void Parser::finish()
{
    if (m_operandExpected)
        return fail("a value is missing at the end");
    reduce(kPrecedenceConditional);
    if (innermostIs(Pending::Kind::Question))
        fail("':' is missing behind '?'");
    else if (!m_pending.empty())
        fail("')' is missing");
}

void Parser::reduce(int precedence)
{
    while (!m_pending.empty() && m_pending.back().precedence >= precedence) {
        const Pending done = m_pending.back();
        m_pending.pop_back();
        if (done.kind == Pending::Kind::Operator) {
            emit(done.operation);
            continue;
        }
        if (done.kind == Pending::Kind::Decision)
            emit(Operation::Truth);
        land(done.jump);
    }
}

std::size_t Parser::emit(Operation operation, double number)
{
    m_program.steps.push_back({operation, number, 0});
    return m_program.steps.size() - 1;
}

void Parser::skipBlanks()
{
    while (m_position < m_text.size() && isBlank(m_text[m_position]))
        ++m_position;
}

bool Parser::take(std::string_view token)
{
    if (m_text.substr(m_position, token.size()) != token)
        return false;
    m_position += token.size();
    return true;
}

void Parser::fail(const std::string& what)
{
    if (m_program.error.empty())
        m_program.error = what;
}

} // namespace

Program parse(std::string_view text)
{
    return Parser(text).run();
}

} // namespace VELAInterface::Formula
