#include "EvaluatorFixture.h"

tests::ScriptedDevice& EvaluatorFixture::freshCamera()
{
    tests::resetScriptedCamera();
    tests::resetSuiteTools();
    return tests::scriptedDevice("S1");
}

EvaluatorFixture::EvaluatorFixture(quint32 transport)
    : camera(freshCamera()), gige(transport == KX_TRANSPORT_GIGE)
{
    const KX_DeviceInfo info = tests::deviceInfo(transport, "S1", "Cam");
    EXPECT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    EXPECT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    tests::Recorder::instance().clear();
}

EvaluatorFixture::~EvaluatorFixture()
{
    EXPECT_EQ(tests::cameraViolations(), QStringList());
}

void EvaluatorFixture::describe(const QString& text)
{
    QString error;
    ASSERT_TRUE(document.setContent("<RegisterDescription>" + text + "</RegisterDescription>", &error))
        << error.toStdString();
    nodes.clear();
    index(document.documentElement());
    startRun();
}

void EvaluatorFixture::index(const QDomElement& parent)
{
    for (QDomElement child = parent.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        if (child.tagName() == "EnumEntry")
            continue;
        if (!child.attribute("Name").isEmpty())
            nodes[child.attribute("Name")] = child;
        index(child);
    }
}

void EvaluatorFixture::startRun()
{
    evaluator.reset();
    budget = std::make_unique<ie::ExportBudget>(limits);
    evaluator = std::make_unique<RegisterEvaluator>(handle, nodes, pairs, gige, *budget);
}

void EvaluatorFixture::select(const QString& selector, const QString& selected)
{
    pairs.append({selector, selected, 0});
    startRun();
}

EvaluatorFixture::Outcome EvaluatorFixture::value(const QString& node)
{
    QList<_FORMULA_RESULT_> results;
    const bool ok = evaluator->getValue(nodes.value(node), results);
    return outcome(ok, results);
}

EvaluatorFixture::Outcome EvaluatorFixture::integer(const QString& node)
{
    QList<_FORMULA_RESULT_> results;
    const bool ok = evaluator->getIntValue(nodes.value(node), results);
    return outcome(ok, results);
}

EvaluatorFixture::Outcome EvaluatorFixture::addresses(const QString& reg)
{
    QList<_FORMULA_RESULT_> results;
    const bool ok = evaluator->getIntRegAddress(nodes.value(reg), results);
    return outcome(ok, results);
}

QString EvaluatorFixture::registerOf(const QString& node, QString* converter)
{
    QDomElement* passed = nullptr;
    const QDomElement element = nodes.value(node);
    const QDomElement* reg = evaluator->getRegNode(element, &passed);
    if (converter)
        *converter = passed ? passed->attribute("Name") : QString("-");
    return reg ? reg->attribute("Name") : QString("-");
}

EvaluatorFixture::Outcome EvaluatorFixture::outcome(bool ok, const QList<_FORMULA_RESULT_>& results)
{
    Outcome outcome;
    outcome.ok = ok;
    for (const _FORMULA_RESULT_& result : results) {
        QString text = QString::number(result.nValue);
        if (!result.strVariables.isEmpty())
            text += ' ' + result.strVariables;
        if (!result.strFormula.isEmpty())
            text += ' ' + result.strFormula;
        outcome.values.append(text);
    }
    return outcome;
}

QStringList EvaluatorFixture::takeLogs()
{
    QStringList lines;
    const QList<tests::TraceEntry> entries = tests::Recorder::instance().logs();
    for (; m_logsTaken < entries.size(); ++m_logsTaken) {
        const tests::TraceEntry& entry = entries[m_logsTaken];
        EXPECT_EQ(entry.level, QtCriticalMsg);
        EXPECT_EQ(entry.file, QByteArray("..\\..\\src\\VELA_Import_Export_Features\\QOperateThread"));
        EXPECT_GT(entry.line, 0);
        EXPECT_TRUE(entry.function.contains('(')) << entry.function.constData();
        EXPECT_TRUE(entry.text.startsWith('"') && entry.text.endsWith('"'));
        lines.append(entry.text.mid(1, entry.text.size() - 2));
    }
    return lines;
}

QStringList EvaluatorFixture::takeCalls()
{
    QStringList texts;
    const QList<tests::TraceEntry> entries = tests::Recorder::instance().calls();
    for (; m_callsTaken < entries.size(); ++m_callsTaken)
        texts.append(entries[m_callsTaken].toString());
    return texts;
}
