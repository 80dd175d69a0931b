#include "iefeatures/check/ImportSkips.h"

#include "jobs/rules/ImportRules.h"

namespace companion
{

QString ImportSkips::reason(const QString& name)
{
    if (ie::isProtectedFeature(name))
        return "protected: imports never write it";
    if (ie::commonSkipList().contains(name))
        return "on the import's skip list";
    if ((name == "AcquisitionLineRate" || name == "AcquisitionLineRateEnable") && !isLineScan())
        return "imports write it to line-scan cameras only";
    return {};
}

bool ImportSkips::isLineScan()
{
    if (!m_isLineScan) {
        const FeatureReader::Reading type = m_reader.read("Enumeration", "DeviceScanType");
        m_isLineScan = type.enumeration && type.enumeration->current == 1;
    }
    return *m_isLineScan;
}

} // namespace companion
