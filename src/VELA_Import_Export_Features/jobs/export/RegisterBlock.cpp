#include "jobs/export/RegisterBlock.h"

#include "jobs/file/FeaturesFile.h"
#include "jobs/nodes/RegisterWords.h"
#include "jobs/rules/JobLog.h"

#include <SuiteTools/SuiteTools.h>

#include <QStringList>
#include <QtEndian>

#include <optional>

namespace
{

QString nameOf(const QDomElement& element)
{
    return element.attribute("Name");
}

quint32 exchangeHalves(quint32 word)
{
    return word << 16 | word >> 16;
}

// A converter between feature and register: its formula and the values that go into it.
struct Conversion
{
    QString name;
    QString formulaFrom;
    QString formulaTo;
    QStringList variables; // in the order met
    QMap<QString, QList<_FORMULA_RESULT_>> values;
    QMap<QString, bool> isRegister; // variable -> stands for the register itself
};

class RegisterBlock
{
public:
    RegisterBlock(RegisterEvaluator& evaluator, KX_HANDLE& handle, QMap<QString, QDomElement>& nodes,
                  bool gige, const QDomElement& feature)
        : m_evaluator(evaluator), m_hDevice(handle), m_mapNodeElement(nodes), m_bGigE(gige),
          m_feature(feature), m_name(nameOf(feature))
    {}

    RegisterAttempt build();
    const QString& text() const { return m_text; }

private:
    bool findRegister();
    bool findLength();
    bool readConverter();
    bool takeVariable(const QDomElement& variable);
    bool allocate();
    bool appendLine(const _FORMULA_RESULT_& address, int index);
    bool readWords(const _FORMULA_RESULT_& address);
    bool readAround(quint32 address);
    bool read(qint64 address, void* buffer, qint64 bytes);
    QString plainContent(bool unaligned) const;
    bool convert(int index, quint32 raw, ie::RegisterValue& value);
    bool substitute(int index, QString& formula) const;
    bool put(QString& formula, const QString& name, const QString& text) const;
    void logNotComputed(const QString& from, const QString& message) const;

    RegisterEvaluator& m_evaluator;
    KX_HANDLE& m_hDevice;
    QMap<QString, QDomElement>& m_mapNodeElement;
    const bool m_bGigE;
    const QDomElement& m_feature;
    const QString m_name;

    QDomElement* m_reg = nullptr;
    QDomElement* m_converter = nullptr;
    qint64 m_length = 0;
    std::optional<Conversion> m_conversion;
    std::optional<ie::RegisterWords> m_words;
    QString m_text;
};

RegisterAttempt RegisterBlock::build()
{
    m_evaluator.budget().beginFeature();
    if (!findRegister() || !findLength())
        return RegisterAttempt::Failed;
    if (m_length == 0)
        return RegisterAttempt::LeftOut;
    m_text = ie::complexBegin(m_name, m_length, nameOf(*m_reg));
    QList<_FORMULA_RESULT_> addresses;
    if (!m_evaluator.getIntRegAddress(*m_reg, addresses) || addresses.isEmpty()) {
        IE_JOB_LOG(QString("getIntRegAddress  failed:%1").arg(m_name));
        return RegisterAttempt::Failed;
    }
    if ((m_converter && !readConverter()) || !allocate())
        return RegisterAttempt::Failed;
    for (int i = 0; i < addresses.size(); ++i)
        if (!appendLine(addresses[i], i))
            return RegisterAttempt::Failed;
    m_text += ie::complexEnd();
    return RegisterAttempt::Written;
}

bool RegisterBlock::findRegister()
{
    m_reg = m_evaluator.getRegNode(m_feature, &m_converter);
    if (!m_reg)
        IE_JOB_LOG(QString("Reg is empty failed:%1").arg(m_name));
    return m_reg != nullptr;
}

bool RegisterBlock::findLength()
{
    const RegisterEvaluator::LengthText text = RegisterEvaluator::lengthText(*m_reg);
    if (text.text.isEmpty()) {
        IE_JOB_LOG(QString("Reg has no value length:%1").arg(m_name));
        return false;
    }
    if (m_evaluator.length(text, m_length) && m_length >= 0)
        return true;
    IE_JOB_LOG(QString("Reg%1 value length:%2 is erro").arg(m_name, text.text));
    return false;
}

bool RegisterBlock::readConverter()
{
    m_conversion.emplace();
    m_conversion->name = nameOf(*m_converter);
    for (QDomElement child = m_converter->firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        const QString tag = child.tagName();
        if (tag == QLatin1String("FormulaFrom"))
            m_conversion->formulaFrom = child.text();
        else if (tag == QLatin1String("FormulaTo"))
            m_conversion->formulaTo = child.text();
        else if (tag == QLatin1String("pVariable") && !takeVariable(child))
            return false;
    }
    if (!m_conversion->formulaFrom.isEmpty() && !m_conversion->formulaTo.isEmpty() &&
        !m_conversion->variables.isEmpty())
        return true;
    IE_JOB_LOG(QString("getValue  failed:%1 no formula or variables").arg(m_conversion->name));
    return false;
}

bool RegisterBlock::takeVariable(const QDomElement& variable)
{
    const QString node = variable.text();
    const QString name = nameOf(variable);
    if (node.isEmpty() || name.isEmpty()) {
        IE_JOB_LOG(QString("getValue failed:%1 pVariable noname").arg(m_conversion->name));
        return false;
    }
    const bool isRegister = node == nameOf(*m_reg);
    QList<_FORMULA_RESULT_> values;
    if (!isRegister && !m_mapNodeElement.contains(node)) {
        IE_JOB_LOG(QString("getValue failed:pVariable%1 %2 no mapdom").arg(name, node));
        return false;
    }
    if (!isRegister && !m_evaluator.getIntValue(m_mapNodeElement[node], values)) {
        IE_JOB_LOG(QString("getValue getIntValue failed:%1").arg(node));
        return false;
    }
    if (!isRegister && values.isEmpty()) {
        IE_JOB_LOG(QString("getValue getIntValue failed:%1 value is empty").arg(node));
        return false;
    }
    if (!m_conversion->values.contains(name))
        m_conversion->variables.append(name);
    m_conversion->values[name] = values;
    m_conversion->isRegister[name] = isRegister;
    return true;
}

// Zeroed once: what one address leaves behind its bytes stays for the next.
bool RegisterBlock::allocate()
{
    m_words.emplace(m_length, m_bGigE);
    if (m_words->isAllocated())
        return true;
    IE_JOB_LOG(QString("malloc size  failed:%1 size:%2")
                   .arg(m_name, QString::number(ie::RegisterWords::wholeWords(m_length) * 4)));
    return false;
}

bool RegisterBlock::appendLine(const _FORMULA_RESULT_& address, int index)
{
    if (!readWords(address))
        return false;
    const bool unaligned = address.nValue % 4 != 0;
    ie::RegisterValue value;
    value.address = address.nValue;
    value.variables = address.strVariables;
    if (!m_conversion) {
        value.content = plainContent(unaligned);
    } else {
        quint32 raw = m_words->word(0);
        if (unaligned)
            raw = exchangeHalves(raw); // by the address alone, whether it was read around or not. Meant.
        if (!convert(index, raw, value))
            return false;
    }
    m_text += ie::registerLine(value);
    return true;
}

bool RegisterBlock::readWords(const _FORMULA_RESULT_& address)
{
    const auto onWire = static_cast<quint32>(address.nValue); // addresses are cut to 32 bits here. Meant.
    if (read(onWire, m_words->data(), m_length))
        return true;
    IE_JOB_LOG(QString("Create RegAddress  failed:%1 addr:%2 formula:%3 variables:%4")
                   .arg(m_name, QString::number(address.nValue), address.strFormula, address.strVariables));
    return address.nValue % 4 != 0 && readAround(onWire);
}

// The four bytes at an address that the camera cannot name, out of the words before and behind.
bool RegisterBlock::readAround(quint32 address)
{
    uchar around[8] = {};
    const bool before = read(quint32(address - 2), around, 4);
    const bool behind = read(quint32(address + 2), around + 4, 4);
    if (!before || !behind)
        return false;
    m_words->setRaw(0, exchangeHalves(qFromLittleEndian<quint32>(around + 2)));
    return true;
}

bool RegisterBlock::read(qint64 address, void* buffer, qint64 bytes)
{
    return m_hDevice && KX_CC_ReadMemory(m_hDevice, buffer, address, bytes) == KX_OK;
}

QString RegisterBlock::plainContent(bool unaligned) const
{
    if (unaligned && m_words->isSwapped()) // one word then
        return ie::wordsText({qbswap(exchangeHalves(m_words->raw(0)))});
    return m_words->text();
}

bool RegisterBlock::convert(int index, quint32 raw, ie::RegisterValue& value)
{
    QString formula = m_conversion->formulaFrom;
    if (!substitute(index, formula))
        return false;
    value.converted = true;
    value.to = QString::number(raw);
    value.from = formula;
    if (!put(formula, "TO", value.to)) // also inside other words. Meant.
        return false;
    bool ok = false;
    const double result = VELAInterface::Compute(formula.toLocal8Bit().constData(), ok);
    if (!ok) {
        logNotComputed(value.from, VELAInterface::GetCalculatorErro());
        return false;
    }
    value.content = QString::number(result, 'f', 6);
    return true;
}

void RegisterBlock::logNotComputed(const QString& from, const QString& message) const
{
    IE_JOB_LOG(QString("getValue  failed:%1 compute erro,formula:%2.msg:%3")
                   .arg(m_name, from.toHtmlEscaped(), message));
}

bool RegisterBlock::put(QString& formula, const QString& name, const QString& text) const
{
    if (m_evaluator.budget().substitute(formula, name, text))
        return true;
    logNotComputed(m_conversion->formulaFrom, "too long");
    return false;
}

// Plain text, in the order in which the converter names its variables.
bool RegisterBlock::substitute(int index, QString& formula) const
{
    for (const QString& variable : m_conversion->variables) {
        if (m_conversion->isRegister[variable]) {
            if (!put(formula, variable, "TO"))
                return false;
            continue;
        }
        const QList<_FORMULA_RESULT_>& values = qAsConst(m_conversion->values)[variable];
        const int wanted = m_conversion->variables.size() == 1 ? 0 : index;
        if (wanted >= values.size()) {
            IE_JOB_LOG(
                QString("getValue  failed:%1 out of size variables:%2").arg(m_conversion->name, variable));
            return false;
        }
        if (!put(formula, variable, QString::number(double(values[wanted].nValue)))) // six significant digits
            return false;
    }
    return true;
}

} // namespace

RegisterAttempt appendRegisterBlock(RegisterEvaluator& evaluator, KX_HANDLE& handle,
                                    QMap<QString, QDomElement>& nodes, bool gige, const QDomElement& feature,
                                    QString& text)
{
    RegisterBlock block(evaluator, handle, nodes, gige, feature);
    const RegisterAttempt result = block.build();
    if (result == RegisterAttempt::Written)
        text += block.text();
    return result;
}
