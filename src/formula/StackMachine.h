// The way through a formula's steps, the same for every kind of number.
#pragma once

#include "formula/Program.h"

#include <memory>

namespace formula
{

// Rules say what numbers are: integer(value), pattern(value), real(value), variable(index), isTrue(value),
// truth(bool), one(operation, value), two(operation, left, right). Where one of them cannot, it leaves a
// `fault`, and the machine stops.
template <typename Value, typename Rules>
class StackMachine
{
public:
    StackMachine(const Program& program, Rules& rules) : m_steps(program.steps), m_rules(rules)
    {
        if (program.height > fewValues) {
            m_many = std::make_unique<Value[]>(program.height);
            m_top = m_many.get();
        }
    }

    // Of no use when the rules have a fault.
    Value run()
    {
        std::size_t next = 0;
        while (next < m_steps.size() && m_rules.fault.kind == Fault::Kind::None) {
            const Step& step = m_steps[next++];
            if (step.operation == Operation::Integer)
                *m_top++ = m_rules.integer(step.integer);
            else if (step.operation == Operation::Pattern)
                *m_top++ = m_rules.pattern(step.integer);
            else if (step.operation == Operation::Real)
                *m_top++ = m_rules.real(step.real);
            else if (step.operation == Operation::Variable)
                *m_top++ = m_rules.variable(step.target);
            else if (step.operation <= Operation::Truth)
                next = control(step, next);
            else if (step.operation < Operation::RoundToDigits)
                m_top[-1] = m_rules.one(step.operation, m_top[-1]);
            else
                twoOperands(step.operation);
        }
        return m_top[-1];
    }

private:
    void twoOperands(Operation operation)
    {
        --m_top;
        m_top[-1] = m_rules.two(operation, m_top[-1], m_top[0]);
    }

    // What follows after `step`, when `next` is the step behind it.
    std::size_t control(const Step& step, std::size_t next)
    {
        if (step.operation == Operation::Jump)
            return step.target;
        const bool truth = m_rules.isTrue(*--m_top);
        switch (step.operation) {
        case Operation::JumpUnless:
            return truth ? next : step.target;
        case Operation::Truth:
            *m_top++ = m_rules.truth(truth);
            return next;
        default:
            if (truth == (step.operation == Operation::DecideAnd))
                return next;
            *m_top++ = m_rules.truth(truth);
            return step.target;
        }
    }

    // Most formulas need no more; they are spared the allocation.
    static constexpr std::size_t fewValues = 16;

    const std::vector<Step>& m_steps;
    Rules& m_rules;
    Value m_few[fewValues];
    std::unique_ptr<Value[]> m_many;
    Value* m_top = m_few;
};

} // namespace formula
