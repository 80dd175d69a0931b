// What an IntSwissKnife gives: its variables' values, every combination of them, computed.
#include "jobs/export/RegisterEvaluator.h"

#include "jobs/rules/JobLog.h"

#include <SuiteTools/SuiteTools.h>

#include <algorithm>
#include <iterator>
#include <limits>

namespace
{

qint64 truncated(double value)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (value >= limit)
        return std::numeric_limits<qint64>::max();
    return value >= -limit ? static_cast<qint64>(value) : std::numeric_limits<qint64>::min();
}

} // namespace

// Variables of one IntSwissKnife; walked in the order of their names.
struct RegisterEvaluator::Formula
{
    QString swissKnife;
    QString text;
    QMap<QString, QList<_FORMULA_RESULT_>> values;
    QMap<QString, QString> nodes;
};

bool RegisterEvaluator::getSwissKnifeValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out)
{
    Formula formula;
    formula.swissKnife = node.attribute("Name");
    for (QDomElement child = node.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        if (child.tagName() == QLatin1String("Formula"))
            formula.text = child.text();
        else if (child.tagName() == QLatin1String("pVariable") &&
                 !takeVariable(child, formula.swissKnife, formula))
            return false;
    }
    if (formula.text.isEmpty() || formula.values.isEmpty()) {
        IE_JOB_LOG(QString("getValue  failed:%1 no formula or variables").arg(formula.swissKnife));
        return false;
    }
    bool ok = true;
    if (!isAffordable(formula) || !computeFormula(formula, formula.text, QString(), 0, out, ok)) {
        IE_JOB_LOG(QString("getValue  failed:%1 compute erro,formula:%2.msg:%3")
                       .arg(formula.swissKnife, formula.text, "too many combinations"));
        return false;
    }
    return ok;
}

bool RegisterEvaluator::isAffordable(const Formula& formula)
{
    constexpr quint64 many = std::numeric_limits<quint32>::max();
    quint64 combinations = 1;
    for (const QList<_FORMULA_RESULT_>& values : formula.values)
        combinations = std::min(many, combinations * quint64(values.size()));
    return m_budget.takeCombinations(combinations, quint64(formula.values.size()));
}

bool RegisterEvaluator::takeVariable(const QDomElement& variable, const QString& swissKnife, Formula& formula)
{
    const QString node = variable.text();
    const QString name = variable.attribute("Name");
    if (node.isEmpty() || name.isEmpty()) {
        IE_JOB_LOG(QString("getValue failed:%1 pVariable noname").arg(swissKnife));
        return false;
    }
    if (!m_mapNodeElement.contains(node)) {
        IE_JOB_LOG(QString("getValue failed:pVariable%1 %2 no mapdom").arg(name, node));
        return false;
    }
    QList<_FORMULA_RESULT_> values;
    if (!getIntValue(m_mapNodeElement[node], values)) {
        IE_JOB_LOG(QString("getValue getIntValue failed:%1").arg(node));
        return false;
    }
    if (values.isEmpty()) {
        IE_JOB_LOG(QString("getValue getIntValue failed:%1 value is empty").arg(node));
        return false;
    }
    formula.values[name] = values;
    formula.nodes[name] = node;
    return true;
}

// One result per combination, the alphabetically last variable changing fastest. Substitution is plain text:
// a name inside a longer one is replaced too. Meant. False: the budget refuses, and nothing more is computed.
bool RegisterEvaluator::computeFormula(const Formula& formula, const QString& text, const QString& variables,
                                       int index, QList<_FORMULA_RESULT_>& out, bool& ok)
{
    if (index < formula.values.size()) {
        const auto variable = std::next(formula.values.cbegin(), index);
        for (const _FORMULA_RESULT_& value : variable.value()) {
            const QString number = QString::number(value.nValue);
            QString substituted = text;
            if (!m_budget.substitute(substituted, variable.key(), number) ||
                !computeFormula(formula, substituted,
                                variables + QString("[%1:%2]").arg(formula.nodes[variable.key()], number),
                                index + 1, out, ok))
                return false;
        }
        return true;
    }
    bool computed = false;
    const double value = VELAInterface::Compute(text.toLocal8Bit().constData(), computed);
    if (computed)
        return append({formula.text, variables, truncated(value)}, out);
    ok = false; // the remaining combinations are computed all the same
    const QString line = QString("getValue  failed:%1 compute erro,formula:%2.msg:%3")
                             .arg(formula.swissKnife, text, VELAInterface::GetCalculatorErro());
    const bool wasTold = m_budget.mayTell(0);
    if (m_budget.mayTell(line.size()))
        IE_JOB_LOG(line);
    else if (wasTold)
        IE_JOB_LOG(QString("Further combinations that fail are not logged."));
    return true;
}
