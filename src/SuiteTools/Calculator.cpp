#include "Calculator.h"

#include "FormulaParser.h"
#include "SuiteTools/SuiteTools.h"

#include <cmath>
#include <cstdint>
#include <exception>
#include <mutex>

namespace VELAInterface
{

namespace Formula
{

namespace
{

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 18446744073709551616.0;

// Rounds half away from zero, at `digits` places behind the point (before it, when negative).
double roundToDigits(double x, double digits)
{
    const double places = std::trunc(digits);
    const double scale = std::pow(10.0, std::fabs(places));
    if (places < 0)
        return std::isfinite(scale) ? std::round(x / scale) * scale : 0.0;
    const double scaled = x * scale;
    return std::isfinite(scaled) ? std::round(scaled) / scale : x; // no double has that many places
}

double applyFunction(Operation operation, double x)
{
    switch (operation) {
    case Operation::Negate:
        return -x;
    case Operation::Abs:
        return std::fabs(x);
    case Operation::Sgn:
        return x > 0 ? 1 : x < 0 ? -1 : 0;
    case Operation::Atan:
        return std::atan(x);
    case Operation::Cos:
        return std::cos(x);
    case Operation::Sin:
        return std::sin(x);
    case Operation::Tan:
        return std::tan(x);
    case Operation::Asin:
        return std::asin(x);
    case Operation::Acos:
        return std::acos(x);
    case Operation::Exp:
        return std::exp(x);
    case Operation::Ln:
        return std::log(x);
    case Operation::Lg:
        return std::log10(x);
    case Operation::Sqrt:
        return std::sqrt(x);
    case Operation::Trunc:
        return std::trunc(x);
    case Operation::Floor:
        return std::floor(x);
    case Operation::Ceil:
        return std::ceil(x);
    default:
        return std::round(x);
    }
}

double applyArithmetic(Operation operation, double a, double b)
{
    switch (operation) {
    case Operation::RoundToDigits:
        return roundToDigits(a, b);
    case Operation::Power:
        return std::pow(a, b);
    case Operation::Multiply:
        return a * b;
    case Operation::Divide:
        return a / b;
    case Operation::Add:
        return a + b;
    case Operation::Subtract:
        return a - b;
    case Operation::Less:
        return a < b;
    case Operation::LessOrEqual:
        return a <= b;
    case Operation::Greater:
        return a > b;
    case Operation::GreaterOrEqual:
        return a >= b;
    case Operation::Equal:
        return a == b;
    default:
        return a != b;
    }
}

// Bits of the operands; a shift count is known to be 0..63, a divisor not to be 0.
std::int64_t applyBits(Operation operation, std::int64_t a, std::int64_t b)
{
    switch (operation) {
    case Operation::Remainder:
        return b == -1 ? 0 : a % b; // the lowest number divided by -1 has no quotient
    case Operation::ShiftLeft:
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) << b);
    case Operation::ShiftRight:
        return a >> b;
    case Operation::BitAnd:
        return a & b;
    case Operation::BitXor:
        return a ^ b;
    default:
        return a | b;
    }
}

class Machine
{
public:
    Result run(const std::vector<Step>& steps);

private:
    std::size_t control(const Step& step, std::size_t next);
    void oneOperand(Operation operation);
    void twoOperands(Operation operation);
    double bitOperation(Operation operation, double a, double b);
    bool toInteger(double x, std::int64_t& integer);

    double pop();
    void push(double x);
    void fail(const char* what);

    std::vector<double> m_stack;
    Result m_result;
};

Result Machine::run(const std::vector<Step>& steps)
{
    std::size_t next = 0;
    while (next < steps.size() && m_result.error.empty()) {
        const Step& step = steps[next++];
        if (step.operation <= Operation::Truth)
            next = control(step, next);
        else if (step.operation < Operation::RoundToDigits)
            oneOperand(step.operation);
        else
            twoOperands(step.operation);
    }
    if (m_result.error.empty())
        m_result.value = pop();
    return m_result;
}

// What follows after `step`, when `next` is the step behind it.
std::size_t Machine::control(const Step& step, std::size_t next)
{
    if (step.operation == Operation::Number) {
        push(step.number);
        return next;
    }
    if (step.operation == Operation::Jump)
        return step.target;
    const bool truth = pop() != 0;
    switch (step.operation) {
    case Operation::JumpUnless:
        return truth ? next : step.target;
    case Operation::Truth:
        push(truth);
        return next;
    default:
        if (truth == (step.operation == Operation::DecideAnd))
            return next;
        push(truth);
        return step.target;
    }
}

void Machine::oneOperand(Operation operation)
{
    const double x = pop();
    push(operation == Operation::Complement ? bitOperation(Operation::BitXor, x, -1)
                                            : applyFunction(operation, x));
}

void Machine::twoOperands(Operation operation)
{
    const double b = pop();
    const double a = pop();
    switch (operation) {
    case Operation::Remainder:
    case Operation::ShiftLeft:
    case Operation::ShiftRight:
    case Operation::BitAnd:
    case Operation::BitXor:
    case Operation::BitOr:
        return push(bitOperation(operation, a, b));
    case Operation::Divide:
        if (b == 0)
            return fail("division by zero");
        [[fallthrough]];
    default:
        push(applyArithmetic(operation, a, b));
    }
}

double Machine::bitOperation(Operation operation, double a, double b)
{
    std::int64_t left = 0;
    std::int64_t right = 0;
    if (!toInteger(a, left) || !toInteger(b, right))
        fail("a number does not fit into 64 bits");
    else if (operation == Operation::Remainder && right == 0)
        fail("division by zero");
    else if ((operation == Operation::ShiftLeft || operation == Operation::ShiftRight) &&
             (right < 0 || right > 63))
        fail("the shift count is not in 0..63");
    else
        return static_cast<double>(applyBits(operation, left, right));
    return 0;
}

bool Machine::toInteger(double x, std::int64_t& integer)
{
    const double whole = std::trunc(x);
    if (whole < -kTwoTo63 || whole >= kTwoTo64)
        return false;
    integer = whole < kTwoTo63 ? static_cast<std::int64_t>(whole)
                               : static_cast<std::int64_t>(static_cast<std::uint64_t>(whole));
    return true;
}

double Machine::pop()
{
    const double x = m_stack.back();
    m_stack.pop_back();
    return x;
}

void Machine::push(double x)
{
    if (!std::isfinite(x))
        fail("the value is not a finite number");
    m_stack.push_back(x);
}

void Machine::fail(const char* what)
{
    if (m_result.error.empty())
        m_result.error = what;
}

} // namespace

Result calculate(std::string_view formula)
{
    const Program program = parse(formula);
    if (program.error.empty())
        return Machine().run(program.steps);
    return {0, program.error};
}

} // namespace Formula

namespace
{

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

} // namespace

double Compute(const char* expression, bool& ok)
{
    Formula::Result result;
    try {
        result = Formula::calculate(expression ? expression : "");
    } catch (const std::exception&) {
        result = {0, "out of memory"};
    }
    ok = result.error.empty();
    if (ok)
        return result.value;
    LastError& error = lastError();
    const std::lock_guard<std::mutex> lock(error.mutex);
    error.text.swap(result.error);
    return 0;
}

QString GetCalculatorErro()
{
    LastError& error = lastError();
    const std::lock_guard<std::mutex> lock(error.mutex);
    return QString::fromStdString(error.text);
}

} // namespace VELAInterface
