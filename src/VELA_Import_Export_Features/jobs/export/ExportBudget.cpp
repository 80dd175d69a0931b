#include "jobs/export/ExportBudget.h"

#include "jobs/export/FormulaResult.h"
#include "jobs/rules/BoundedText.h"

#include <QThread>

#include <algorithm>

namespace ie
{
namespace
{

// One value in a list: the list's pointer, the record, and what an allocation costs beside.
constexpr quint64 kValueSize = sizeof(void*) + sizeof(_FORMULA_RESULT_) + 16;

// Milliseconds of work. What is over before needs no look: the next question to the camera is refused.
constexpr quint64 kBetweenLooks = 65536;

} // namespace

bool ExportBudget::allow(bool isAllowed)
{
    if (!isAllowed)
        ++m_refusals;
    return isAllowed;
}

void ExportBudget::lookForInterruption(quint64 amount)
{
    m_sinceLook += amount;
    if (m_sinceLook < kBetweenLooks)
        return;
    m_sinceLook = 0;
    m_isInterrupted = m_isInterrupted || QThread::currentThread()->isInterruptionRequested();
}

// A refusal takes all that is left, so nothing smaller passes behind it.
bool ExportBudget::take(quint64& taken, quint64 amount, quint64 limit)
{
    lookForInterruption(amount);
    const bool isAllowed = !m_isInterrupted && amount <= limit && taken <= limit - amount;
    taken = isAllowed ? taken + amount : limit + 1;
    return allow(isAllowed);
}

bool ExportBudget::enter()
{
    return allow(++m_depth <= m_limits.depth) && take(m_steps, 1, m_limits.steps);
}

bool ExportBudget::takeQuestion()
{
    return take(m_questions, 1, m_limits.questions);
}

bool ExportBudget::takeRange(quint64 values)
{
    return allow(values <= m_limits.values);
}

bool ExportBudget::takeCombinations(quint64 combinations, quint64 variables)
{
    return allow(combinations <= m_limits.values && variables <= m_limits.variables) &&
           take(m_steps, combinations, m_limits.steps);
}

bool ExportBudget::takeValue(qint64 characters)
{
    return take(m_memory, kValueSize + quint64(characters) * sizeof(QChar), m_limits.memory);
}

bool ExportBudget::substitute(QString& text, const QString& name, const QString& value)
{
    return take(m_text, quint64(text.size()), m_limits.text) && allow(replaceBounded(text, name, value));
}

bool ExportBudget::mayTell(qint64 characters)
{
    m_told = std::min(m_told + quint64(characters), m_limits.told + 1);
    return m_told <= m_limits.told;
}

} // namespace ie
