#include "jobs/export/RegisterEvaluator.h"

#include "jobs/nodes/RegisterWords.h"
#include "jobs/rules/JobLog.h"

#include <SuiteTools/SuiteTools.h>

#include <QStringList>
#include <QtEndian>

#include <algorithm>
#include <optional>

namespace
{

QString nameOf(const QDomElement& element)
{
    return element.attribute("Name");
}

bool isRegister(const QString& tag)
{
    return tag == QLatin1String("IntReg") || tag == QLatin1String("MaskedIntReg") ||
           tag == QLatin1String("StructReg") || tag == QLatin1String("StringReg");
}

// Handles, not copies of what they stand for: who asks for a register may only read it.
QDomElement* handleOf(const QDomElement& element)
{
    return const_cast<QDomElement*>(&element);
}

_FORMULA_RESULT_ constant(qint64 value)
{
    _FORMULA_RESULT_ result;
    result.nValue = value;
    return result;
}

// Sums of addresses wrap instead of overflowing.
qint64 sum(qint64 a, qint64 b)
{
    return static_cast<qint64>(static_cast<quint64>(a) + static_cast<quint64>(b));
}

// Shifts that cut a bit range out of a word: left, then right.
struct BitShifts
{
    unsigned int left = 0;
    unsigned int right = 0;
};

// Nothing where the node names no range. Bit 0 is the least significant one whatever the register's byte
// order. Meant. Counts stay within a word.
std::optional<BitShifts> bitShifts(const QDomElement& node)
{
    const QDomElement bit = node.firstChildElement("Bit");
    if (!bit.isNull())
        return BitShifts{(31u - static_cast<unsigned int>(bit.text().toInt())) & 31, 31};
    const QDomElement lsb = node.firstChildElement("LSB");
    const QDomElement msb = node.firstChildElement("MSB");
    if (lsb.isNull() || msb.isNull())
        return std::nullopt;
    const auto low = static_cast<unsigned int>(std::min(lsb.text().toInt(), msb.text().toInt()));
    const auto high = static_cast<unsigned int>(std::max(lsb.text().toInt(), msb.text().toInt()));
    return BitShifts{(31u - high) & 31, (31u - high + low) & 31};
}

} // namespace

// One level of the operations that call each other.
class RegisterEvaluator::Nesting
{
public:
    explicit Nesting(ie::ExportBudget& budget) : m_budget(budget), m_isAllowed(budget.enter()) {}
    ~Nesting() { m_budget.leave(); }
    bool isAllowed() const { return m_isAllowed; }

private:
    ie::ExportBudget& m_budget;
    const bool m_isAllowed;
};

RegisterEvaluator::RegisterEvaluator(KX_HANDLE& handle, QMap<QString, QDomElement>& nodes,
                                     const QList<SelectorPair>& selectorPairs, bool gige,
                                     ie::ExportBudget& budget)
    : m_hDevice(handle), m_mapNodeElement(nodes), m_bGigE(gige), m_budget(budget)
{
    for (const SelectorPair& pair : selectorPairs)
        m_mapSelectorsOf[pair.strSelected].append(pair.strSelector);
}

bool RegisterEvaluator::isNumber(const QString& text)
{
    const int digits = text.startsWith("0x") ? 2 : 0;
    if (text.size() == digits)
        return false;
    return std::all_of(text.cbegin() + digits, text.cend(), [](QChar c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
    });
}

QDomElement* RegisterEvaluator::getRegNode(const QDomElement& node, QDomElement** converter)
{
    const Nesting nesting(m_budget);
    if (!nesting.isAllowed())
        return nullptr;
    const QString tag = node.tagName();
    if (tag == QLatin1String("Register") || isRegister(tag))
        return handleOf(node);
    if (tag == QLatin1String("IntConverter") || tag == QLatin1String("Converter"))
        *converter = handleOf(node);

    QString key = nameOf(node);
    if (tag != QLatin1String("StructEntry")) {
        const QDomElement value = node.firstChildElement("pValue");
        if (value.isNull())
            return nullptr;
        key = value.text();
    }
    QDomElement& target = m_mapNodeElement[key];
    if (isRegister(target.tagName()))
        return &target;
    if (target.tagName() != QLatin1String("StructEntry"))
        return getRegNode(target, converter);
    const QDomElement owner = target.parentNode().toElement();
    if (owner.isNull())
        return nullptr;
    QDomElement& stored = m_mapNodeElement[key + "_"];
    stored = owner;
    return &stored;
}

bool RegisterEvaluator::getIntRegAddress(const QDomElement& reg, QList<_FORMULA_RESULT_>& out)
{
    const auto fail = [&reg] {
        IE_JOB_LOG(QString("getIntRegAddress  failed:%1").arg(nameOf(reg)));
        return false;
    };
    QList<QList<_FORMULA_RESULT_>> terms;
    for (QDomElement child = reg.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        if (child.tagName() != QLatin1String("Address") && child.tagName() != QLatin1String("pAddress"))
            continue;
        const QString text = child.text();
        QList<_FORMULA_RESULT_> term;
        if (isNumber(text)) {
            if (!append(constant(VELAInterface::string2Int(text)), term))
                return fail();
        } else if (!getValue(m_mapNodeElement[text], term)) {
            IE_JOB_LOG(QString("getIntRegAddress getValue failed:%1").arg(text));
            return false;
        }
        terms.append(term);
    }
    const auto single =
        std::find_if(terms.cbegin(), terms.cend(), [](const auto& term) { return term.size() == 1; });
    if (single == terms.cend())
        return fail();
    const _FORMULA_RESULT_ base = single->first();
    terms.removeAt(int(single - terms.cbegin()));
    if (terms.isEmpty())
        return append(base, out) || fail();
    const int count = terms.first().size();
    if (!std::all_of(terms.cbegin(), terms.cend(),
                     [count](const auto& term) { return term.size() == count; }))
        return fail();
    // Terms run in parallel, never as a cross product.
    for (int k = 0; k < count; ++k) {
        _FORMULA_RESULT_ address = base;
        for (const QList<_FORMULA_RESULT_>& term : qAsConst(terms)) {
            address.strVariables += term[k].strVariables;
            address.nValue = sum(address.nValue, term[k].nValue);
        }
        if (!append(address, out))
            return fail();
    }
    return true;
}

bool RegisterEvaluator::getValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out)
{
    const Nesting nesting(m_budget);
    if (node.isNull() || !nesting.isAllowed())
        return false;
    const QString tag = node.tagName();
    if (tag == QLatin1String("Integer")) {
        if (getIntValue(node, out))
            return true;
        IE_JOB_LOG(QString("getValue  getIntValue failed:%1").arg(nameOf(node)));
        return false;
    }
    if (tag == QLatin1String("Enumeration")) {
        if (node.hasAttribute("Name") && appendSupported(nameOf(node), out))
            return true;
        IE_JOB_LOG(QString("getValue  GetEnumerationNodePropertyValue failed:%1").arg(nameOf(node)));
        return false;
    }
    if (tag == QLatin1String("IntSwissKnife"))
        return getSwissKnifeValue(node, out);
    IE_JOB_LOG(QString("getValue  failed:%1 unsupport tagname%2").arg(nameOf(node), tag));
    return false;
}

bool RegisterEvaluator::append(const _FORMULA_RESULT_& result, QList<_FORMULA_RESULT_>& out)
{
    if (!m_budget.takeValue(result.strVariables.size()))
        return false;
    out.append(result);
    return true;
}

bool RegisterEvaluator::getIntValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out)
{
    const Nesting nesting(m_budget);
    if (!nesting.isAllowed())
        return false;
    const QString tag = node.tagName();
    if (tag == QLatin1String("StructEntry") || tag == QLatin1String("MaskedIntReg"))
        return getBitFieldValue(node, out);
    return node.firstChildElement("Value").isNull() ? getLinkedValue(node, out) : getConstantValue(node, out);
}

RegisterEvaluator::LengthText RegisterEvaluator::lengthText(const QDomElement& reg)
{
    const QDomElement length = reg.firstChildElement("Length");
    if (!length.isNull())
        return {length.text(), false};
    return {reg.firstChildElement("pLength").text(), true};
}

bool RegisterEvaluator::length(const LengthText& length, qint64& bytes)
{
    if (isNumber(length.text)) {
        bytes = VELAInterface::string2Int(length.text);
        return true;
    }
    if (!length.isReference || !m_mapNodeElement.contains(length.text))
        return false;
    QList<_FORMULA_RESULT_> values;
    const quint64 refusals = m_budget.refusals();
    const bool ok = getValue(m_mapNodeElement[length.text], values);
    // A failed evaluation that left exactly one value counts too, unless the budget ended it. Meant.
    const bool isMeant = ok || (values.size() == 1 && m_budget.refusals() == refusals);
    if (values.isEmpty() || !isMeant)
        return false;
    bytes = values.first().nValue;
    return true;
}

bool RegisterEvaluator::getBitFieldValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out)
{
    QDomElement* converter = nullptr;
    const QDomElement* reg = getRegNode(node, &converter);
    if (!reg)
        return false;
    const LengthText text = lengthText(*reg);
    if (text.text.isEmpty()) {
        IE_JOB_LOG(QString("Reg has no value length:%1").arg(nameOf(*reg)));
        return false;
    }
    qint64 bytes = 0;
    if (!length(text, bytes)) {
        if (!text.isReference)
            IE_JOB_LOG(QString("Reg%1 value length:%2 is erro").arg(nameOf(*reg), text.text));
        return false;
    }
    QList<_FORMULA_RESULT_> addresses;
    if (bytes <= 0 || !getIntRegAddress(*reg, addresses))
        return false;
    return readBitFields(node, *reg, bytes, addresses, out);
}

bool RegisterEvaluator::readBitFields(const QDomElement& node, const QDomElement& reg, qint64 bytes,
                                      const QList<_FORMULA_RESULT_>& addresses, QList<_FORMULA_RESULT_>& out)
{
    ie::RegisterWords words(bytes, m_bGigE);
    if (!words.isAllocated()) {
        IE_JOB_LOG(QString("malloc size  failed:%1 size:%2")
                       .arg(nameOf(reg), QString::number(ie::RegisterWords::wholeWords(bytes) * 4)));
        return false;
    }
    const std::optional<BitShifts> shifts = bitShifts(node); // of the node, not of its register
    if (!shifts)
        return false;
    for (const _FORMULA_RESULT_& address : addresses) {
        if (!readMemory(address.nValue, words.data(), bytes))
            return false;
        const quint32 value = (words.word(0) << shifts->left) >> shifts->right;
        if (!append(constant(value), out)) // without the address's formula and variables. Meant.
            return false;
    }
    return true;
}

bool RegisterEvaluator::getLinkedValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out)
{
    QDomElement* converter = nullptr; // a converter on the way is not applied. Meant.
    if (const QDomElement* reg = getRegNode(node, &converter))
        return getRegisterValue(*reg, out);
    if (node.tagName() == QLatin1String("IntSwissKnife"))
        return getValue(node, out);
    const QString text = node.firstChildElement("pValue").text();
    if (text.isEmpty()) {
        IE_JOB_LOG(QString("getIntReg failed:%1").arg(nameOf(node)));
        return false;
    }
    if (!isNumber(text))
        return getValue(m_mapNodeElement[text], out);
    return append(constant(VELAInterface::string2Int(text)), out);
}

// Four bytes, swapped on GigE, whatever the register's length. Meant.
bool RegisterEvaluator::getRegisterValue(const QDomElement& reg, QList<_FORMULA_RESULT_>& out)
{
    QList<_FORMULA_RESULT_> addresses;
    if (!getIntRegAddress(reg, addresses)) {
        IE_JOB_LOG(QString("getIntRegAddress failed:%1").arg(nameOf(reg)));
        return false;
    }
    for (const _FORMULA_RESULT_& address : qAsConst(addresses)) {
        quint32 word = 0;
        if (!readMemory(address.nValue, &word, sizeof word)) {
            IE_JOB_LOG(QString("getIntRegAddress failed:%1 GetValueFromReg failed addr%2")
                           .arg(nameOf(reg), QString::number(address.nValue)));
            return false;
        }
        word = qFromLittleEndian(word);
        if (!append({address.strFormula, address.strVariables, qint64(m_bGigE ? qbswap(word) : word)}, out))
            return false;
    }
    return true;
}

bool RegisterEvaluator::getConstantValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out)
{
    if (!node.hasAttribute("Name")) {
        IE_JOB_LOG(QString("getIntValue failed: name isNull"));
        return false;
    }
    const QString name = nameOf(node);
    const auto selector = m_mapSelected.constFind(name);
    if (selector != m_mapSelected.constEnd())
        return getSelectorValue(selector.value(), out);
    const QDomElement value = node.firstChildElement("Value");
    if (!value.firstChildElement("pSelected").isNull())
        return appendRange(name, out);
    if (!isNumber(value.text())) {
        IE_JOB_LOG(QString("getIntValue failed:%1 valuenode content is unsupport").arg(name));
        return false;
    }
    return append(constant(VELAInterface::string2Int(value.text())), out);
}

bool RegisterEvaluator::getSelectorValue(const QDomElement& selector, QList<_FORMULA_RESULT_>& out)
{
    if (!selector.hasAttribute("Name")) {
        IE_JOB_LOG(QString("getIntValue failed: domName isNull"));
        return false;
    }
    const QString name = nameOf(selector);
    if (selector.tagName() == QLatin1String("Integer"))
        return appendRange(name, out);
    if (selector.tagName() != QLatin1String("Enumeration")) {
        IE_JOB_LOG(QString("getIntValue failed:%1 tagName%2 unsupport").arg(name, selector.tagName()));
        return false;
    }
    if (appendSupported(name, out))
        return true;
    IE_JOB_LOG(QString("getIntValue failed:%1 GetEnumerationNodePropertyValue failed").arg(name));
    return false;
}

bool RegisterEvaluator::appendSupported(const QString& name, QList<_FORMULA_RESULT_>& out)
{
    KX_EnumValue value = {};
    if (!m_hDevice || !m_budget.takeQuestion() ||
        KX_CC_GetEnumValue(m_hDevice, name.toLatin1().constData(), &value) != KX_OK)
        return false;
    // Registers of the values that the record has no place for would be missing without a word.
    if (value.supportedCount > KX_ENUM_CAPACITY)
        return false;
    return std::all_of(value.supported, value.supported + value.supportedCount,
                       [&](quint32 entry) { return append(constant(entry), out); });
}

// Every value from the minimum to the maximum in steps of the increment; the minimum alone without a step.
bool RegisterEvaluator::appendRange(const QString& name, QList<_FORMULA_RESULT_>& out)
{
    KX_IntegerValue value = {};
    const bool read = m_hDevice && m_budget.takeQuestion() &&
                      KX_CC_GetIntValueEx(m_hDevice, name.toLatin1().constData(), &value) == KX_OK;
    quint64 steps = 0; // behind the minimum
    if (read && value.increment > 0 && value.maximum > value.minimum)
        steps = (quint64(value.maximum) - quint64(value.minimum)) / quint64(value.increment);
    const quint64 count = value.minimum > value.maximum ? 0 : steps == ~quint64(0) ? steps : steps + 1;
    bool ok = read && m_budget.takeRange(count);
    for (quint64 i = 0; ok && i < count; ++i)
        ok = append(constant(qint64(quint64(value.minimum) + i * quint64(value.increment))), out);
    if (!ok)
        IE_JOB_LOG(QString("getIntValue failed:%1 GetIntegerNodePropertyValue failed").arg(name));
    return ok;
}

bool RegisterEvaluator::readMemory(qint64 address, void* buffer, qint64 bytes)
{
    return m_hDevice && m_budget.takeQuestion() &&
           KX_CC_ReadMemory(m_hDevice, buffer, address, bytes) == KX_OK;
}

bool RegisterEvaluator::isSelectedFeature(const QString& name)
{
    const auto selectors = m_mapSelectorsOf.constFind(name);
    if (selectors == m_mapSelectorsOf.constEnd())
        return false;
    for (const QString& selectorName : selectors.value()) {
        const QDomElement selector = m_mapNodeElement.value(selectorName);
        if (selector.tagName() != QLatin1String("Enumeration") &&
            selector.tagName() != QLatin1String("Integer"))
            continue;
        const QDomElement value = selector.firstChildElement("pValue");
        const QString key = value.isNull() ? selectorName : value.text();
        if (!m_mapSelected.contains(key)) // the first selector that stands for it stays
            m_mapSelected.insert(key, selector);
    }
    return true;
}
