#include "jobs/export/FeaturesExport.h"

#include "jobs/export/RegisterBlock.h"
#include "jobs/file/FeaturesFile.h"
#include "jobs/nodes/FeatureKind.h"
#include "jobs/rules/JobLog.h"

#include <SuiteTools/SuiteTools.h>

namespace ie
{

FeaturesExport::FeaturesExport(const Source& source)
    : m(source), m_evaluator(m.handle, m.nodes, m.selectorPairs, m.isGigE, m_budget)
{}

bool FeaturesExport::build(const QString& modelName, QString& text)
{
    m_text.clear();
    if (!appendHeader(modelName) || !appendFeatures())
        return false;
    text = m_text + fileEnd();
    return true;
}

bool FeaturesExport::appendHeader(const QString& modelName)
{
    m_text += fileBegin(VELAInterface::softwareVersion());
    const FeatureReading firmware = readFeature(m.camera, FeatureKind::StringReg, "DeviceFirmwareVersion");
    if (!firmware.isGood()) {
        IE_JOB_LOG_OF("bool QOperateThread::export_xml()", "Get XML_NODE_FIRMWARE failed.");
        return false;
    }
    m_text += headerLine("DeviceFirmwareVersion", firmware.text);
    m_text += headerLine("DeviceModelName", modelName);
    const FeatureReading boardType = readFeature(m.camera, FeatureKind::Integer, "BoardDeviceType");
    if (boardType.isGood())
        m_text += headerLine("BoardDeviceType", boardType.text);
    m_text += featuresBegin();
    return true;
}

bool FeaturesExport::appendFeatures()
{
    const QSet<QString> listed(m.featureNames.cbegin(), m.featureNames.cend());
    // Over the living map: evaluating a feature adds entries, and those behind the current one are visited
    // too.
    for (auto it = m.nodes.begin(); it != m.nodes.end(); ++it) {
        const QDomElement element = it.value();
        const QString name = element.attribute("Name");
        if (!listed.contains(name) || m.isSkipped(name) || element.tagName() == "Command")
            continue;
        if (!appendFeature(element))
            return false;
    }
    return !m_budget.isInterrupted();
}

// A selected feature is one register with an address per selector value, and a plain value only where that
// cannot be had; all others the other way round.
bool FeaturesExport::appendFeature(const QDomElement& element)
{
    const auto tryRegisters = [&] {
        return appendRegisterBlock(m_evaluator, m.handle, m.nodes, m.isGigE, element, m_text);
    };
    const QString name = element.attribute("Name");
    if (m_evaluator.isSelectedFeature(name) && tryRegisters() != RegisterAttempt::Failed)
        return true;
    const auto kind = featureKind(element.tagName());
    const FeatureReading reading = kind ? readFeature(m.camera, *kind, name) : FeatureReading();
    if (reading.isGood()) {
        m_text += plainBlock({name, element.tagName(), reading.text});
        return true;
    }
    if (KX_IS_LINE_FAILURE(reading.status))
        return false;
    tryRegisters(); // a selected feature's second attempt. Meant.
    return true;
}

} // namespace ie
