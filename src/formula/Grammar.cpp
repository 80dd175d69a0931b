#include "formula/Grammar.h"

#include "formula/Language.h"
#include "formula/Literal.h"

#include <algorithm>
#include <utility>

namespace formula
{

namespace
{

// ---- characters ----

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
        Call,
        Part // a named one
    };
    Kind kind;
    int level;
    Operation operation = Operation::Jump; // of an operator, or of the called function
    std::size_t jump = 0;                  // the step whose target is not known yet
    bool hasComma = false;                 // of a call
};

// Where to go on behind a named part.
struct Outer
{
    std::string_view text;
    std::size_t position;
};

// Operator precedence parsing with an explicit stack. After the first fault it only finds its way out.
class Parser
{
public:
    Parser(std::string_view text, Dialect dialect, const Scope& scope)
        : m_language(languages[static_cast<std::size_t>(dialect)]), m_scope(scope), m_text(text)
    {
        m_program.steps.reserve(16);
        m_pending.reserve(8);
    }

    Parsed run();

private:
    void readParts();
    void readText();
    void readOperand();
    void readName();
    bool readDeclared(std::string_view name);
    void charge();
    void readConstant(std::string_view name, double value);
    void readLiteral();
    void readOperator();
    void open(Pending::Kind kind, Operation operation);
    void close();
    void comma();
    void question();
    void colon();
    void binary(const BinaryOperator& op);
    void endText();

    // Completes what binds at least as tightly as `level`, back to the last bracket or "?".
    void reduce(int level);
    bool innermostIs(Pending::Kind kind) const { return !m_pending.empty() && m_pending.back().kind == kind; }

    void push(const Pending& pending);
    std::size_t emit(const Step& step);
    std::size_t emit(Operation operation) { return emit(Step{operation, {0}}); }
    void operand(const Step& step);
    void land(std::size_t jump) { m_program.steps[jump].target = m_program.steps.size(); }
    void skipBlanks();
    bool take(std::string_view token);
    bool failed() const { return m_fault.kind != Fault::Kind::None; }
    void fail(Fault::Kind kind) { fail(kind, m_position, m_text.substr(m_position)); }
    void failBefore(Fault::Kind kind) { fail(kind, m_position - 1, m_text.substr(m_position - 1)); }
    void fail(Fault::Kind kind, std::size_t position, std::string_view rest);

    const Language& m_language;
    const Scope& m_scope;
    std::string_view m_text;
    std::size_t m_position = 0;
    bool m_operandExpected = true;
    std::size_t m_open = 0;
    std::size_t m_height = 0;
    std::vector<Pending> m_pending;
    std::vector<Outer> m_outer; // one for each pending part
    Program m_program;
    Fault m_fault;
};

// ---- operands ----

Parsed Parser::run()
{
    charge();
    skipBlanks();
    if (m_position == m_text.size())
        fail(Fault::Kind::Empty);
    else if (!failed())
        readParts();
    return {std::move(m_program), m_fault};
}

void Parser::readParts()
{
    readText();
    while (!failed() && !m_pending.empty()) { // the part that has just ended
        m_text = m_outer.back().text;
        m_position = m_outer.back().position;
        m_outer.pop_back();
        m_pending.pop_back();
        readText();
    }
}

// Up to the end of the text, or of the innermost part.
void Parser::readText()
{
    skipBlanks();
    while (!failed() && m_position < m_text.size()) {
        if (m_operandExpected)
            readOperand();
        else
            readOperator();
        skipBlanks();
    }
    if (!failed())
        endText();
}

void Parser::readOperand()
{
    if (take("("))
        open(Pending::Kind::Parenthesis, Operation::Jump);
    else if (take("-"))
        push({Pending::Kind::Operator, signLevel, Operation::Negate});
    else if (take("~"))
        push({Pending::Kind::Operator, signLevel, Operation::Complement});
    else if (isNameStart(m_text[m_position]))
        readName();
    else if (!take("+"))
        readLiteral();
}

void Parser::readName()
{
    const std::size_t start = m_position;
    while (m_position < m_text.size() && isNamePart(m_text[m_position]))
        ++m_position;
    const std::string_view name = m_text.substr(start, m_position - start);
    const std::size_t end = m_position;
    const Function* const function = findByName(functions, name, m_language.ignoresCase);
    skipBlanks();
    if (function && take("("))
        return open(Pending::Kind::Call, function->operation);
    const std::size_t next = std::exchange(m_position, end);
    if (readDeclared(name))
        return;
    if (const Constant* const constant = findByName(constants, name, m_language.ignoresCase))
        return readConstant(name, constant->value);
    fail(function ? Fault::Kind::CallWithoutParenthesis : Fault::Kind::UnknownName, function ? next : start,
         name);
}

// A variable, or a named part: its text is read before this one goes on, and is one operand.
bool Parser::readDeclared(std::string_view name)
{
    const auto variable = std::find(m_scope.variables.begin(), m_scope.variables.end(), name);
    if (variable != m_scope.variables.end()) {
        operand({Operation::Variable, {static_cast<std::size_t>(variable - m_scope.variables.begin())}});
        return true;
    }
    const auto expression = m_scope.expressions.find(name);
    if (expression == m_scope.expressions.end())
        return false;
    push({Pending::Kind::Part, bracketLevel});
    m_outer.push_back({m_text, m_position});
    m_text = expression->second;
    m_position = 0;
    charge();
    return true;
}

// The text that begins.
void Parser::charge()
{
    if (!m_scope.characters)
        return;
    if (*m_scope.characters < m_text.size())
        return fail(Fault::Kind::TooLongTogether);
    *m_scope.characters -= m_text.size();
}

void Parser::readConstant(std::string_view name, double value)
{
    operand(realStep(value));
    skipBlanks();
    if (!take("(")) // PI and PI() are both in use
        return;
    skipBlanks();
    if (!take(")"))
        fail(Fault::Kind::ArgumentOfConstant, m_position, name);
}

void Parser::readLiteral()
{
    const std::string_view rest = m_text.substr(m_position);
    const bool isNumber = (rest[0] >= '0' && rest[0] <= '9') || rest[0] == '.';
    if (!isNumber)
        return fail(Fault::Kind::ValueMissing);
    const Literal literal = scanLiteral(rest);
    if (literal.fault == Fault::Kind::NoNumber || literal.fault == Fault::Kind::NoDigits)
        return fail(literal.fault);
    if (literal.length < rest.size() && isNamePart(rest[literal.length]))
        return fail(Fault::Kind::NumberRunsOn, m_position, rest.substr(literal.length));
    if (literal.fault != Fault::Kind::None)
        return fail(literal.fault, m_position, rest.substr(0, literal.length));
    m_position += literal.length;
    operand(literal.step);
}

void Parser::operand(const Step& step)
{
    emit(step);
    m_operandExpected = false;
}

// ---- operators and brackets ----

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
    for (const BinaryOperator& op : binaryOperators)
        if (take(op.sign))
            return binary(op);
    fail(Fault::Kind::OperatorMissing);
}

void Parser::open(Pending::Kind kind, Operation operation)
{
    if (++m_open > m_language.bounds.open)
        return fail(Fault::Kind::TooDeep);
    push({kind, bracketLevel, operation});
}

void Parser::close()
{
    reduce(conditionalLevel);
    if (innermostIs(Pending::Kind::Call))
        emit(m_pending.back().hasComma ? Operation::RoundToDigits : m_pending.back().operation);
    else if (innermostIs(Pending::Kind::Question))
        return fail(Fault::Kind::ColonMissing);
    else if (!innermostIs(Pending::Kind::Parenthesis))
        return failBefore(Fault::Kind::ParenthesisNotOpened);
    m_pending.pop_back();
    --m_open;
}

void Parser::comma()
{
    reduce(conditionalLevel);
    if (!innermostIs(Pending::Kind::Call) || m_pending.back().operation != Operation::Round ||
        m_pending.back().hasComma)
        return failBefore(Fault::Kind::SecondArgument);
    m_pending.back().hasComma = true;
    m_operandExpected = true;
}

void Parser::question()
{
    reduce(m_language.chainsFromRight ? conditionalLevel + 1 : conditionalLevel);
    push({Pending::Kind::Question, bracketLevel, Operation::JumpUnless, emit(Operation::JumpUnless)});
    m_operandExpected = true;
}

void Parser::colon()
{
    reduce(conditionalLevel);
    if (!innermostIs(Pending::Kind::Question))
        return failBefore(Fault::Kind::ColonWithoutQuestion);
    const std::size_t toElse = m_pending.back().jump;
    m_pending.back() = {Pending::Kind::Colon, conditionalLevel, Operation::Jump, emit(Operation::Jump)};
    land(toElse);
    m_operandExpected = true;
}

void Parser::binary(const BinaryOperator& op)
{
    const int level = m_language.levels[static_cast<std::size_t>(&op - binaryOperators)];
    const bool rightToLeft = m_language.chainsFromRight && op.operation == Operation::Power;
    reduce(rightToLeft ? level + 1 : level);
    if (op.operation == Operation::DecideAnd || op.operation == Operation::DecideOr)
        push({Pending::Kind::Decision, level, op.operation, emit(op.operation)});
    else
        push({Pending::Kind::Operator, level, op.operation});
    m_operandExpected = true;
}

// Leaves nothing pending, or the part that ends here as the innermost.
void Parser::endText()
{
    if (m_operandExpected)
        return fail(Fault::Kind::ValueMissingAtEnd);
    reduce(conditionalLevel);
    if (innermostIs(Pending::Kind::Question))
        return fail(Fault::Kind::ColonMissing);
    if (!m_pending.empty() && !innermostIs(Pending::Kind::Part))
        fail(Fault::Kind::ParenthesisMissing);
}

void Parser::reduce(int level)
{
    while (!m_pending.empty() && m_pending.back().level >= level) {
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

// ---- what all of them need ----

void Parser::push(const Pending& pending)
{
    if (m_pending.size() >= m_language.bounds.pending)
        return fail(Fault::Kind::TooDeep);
    m_pending.push_back(pending);
}

// The step's index.
std::size_t Parser::emit(const Step& step)
{
    if (m_program.steps.size() >= m_language.bounds.steps)
        fail(Fault::Kind::TooLong);
    const Operation operation = step.operation;
    const bool isOperand = operation <= Operation::Variable;
    const bool isOneForOne = operation == Operation::Truth ||
                             (operation >= Operation::Negate && operation < Operation::RoundToDigits);
    if (isOperand)
        m_program.height = std::max(m_program.height, ++m_height);
    else if (!isOneForOne)
        --m_height; // jumps too: what stands behind them is reached with one number less
    m_program.steps.push_back(step);
    return m_program.steps.size() - 1;
}

void Parser::skipBlanks()
{
    while (m_position < m_text.size() && isBlank(m_text[m_position]))
        ++m_position;
}

bool Parser::take(std::string_view token)
{
    if (m_text.compare(m_position, token.size(), token) != 0)
        return false;
    m_position += token.size();
    return true;
}

void Parser::fail(Fault::Kind kind, std::size_t position, std::string_view rest)
{
    if (failed())
        return;
    m_fault.kind = kind;
    m_fault.position = position;
    m_fault.rest = rest;
    const auto bracket = std::find_if(m_pending.rbegin(), m_pending.rend(),
                                      [](const Pending& it) { return it.level == bracketLevel; });
    if (bracket != m_pending.rend() && bracket->kind != Pending::Kind::Part)
        m_fault.closing = bracket->kind == Pending::Kind::Question ? ':' : ')';
}

} // namespace

Parsed parse(std::string_view text, Dialect dialect, const Scope& scope)
{
    return Parser(text, dialect, scope).run();
}

} // namespace formula
