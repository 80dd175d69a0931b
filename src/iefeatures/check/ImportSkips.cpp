#include "iefeatures/check/ImportSkips.h"

#include "jobs/rules/ImportRules.h"

namespace companion
{

QString ImportSkips::reason(const QString& name)
{
    switch (ie::importSkip(name, [this] { return scanType(); })) {
    case ie::ImportSkip::Protected:
        return "protected: imports never write it";
    case ie::ImportSkip::Listed:
        return "on the import's skip list";
    case ie::ImportSkip::LineScanOnly:
        return "imports write it to line-scan cameras only";
    default:
        return {};
    }
}

QString ImportSkips::scanType()
{
    if (!m_scanType)
        m_scanType = m_reader.read(ie::FeatureKind::Enumeration, "DeviceScanType").text;
    return *m_scanType;
}

} // namespace companion
