#include "iefeatures/check/ImportSkips.h"

#include "jobs/rules/ImportRules.h"

namespace companion
{

QString ImportSkips::reason(const QString& name)
{
    const auto scanType = [this] {
        if (!m_scanType)
            m_scanType = m_reader.read(ie::FeatureKind::Enumeration, "DeviceScanType").text;
        return *m_scanType;
    };
    switch (ie::importSkip(name, scanType)) {
    case ie::ImportSkip::Protected:
        return "protected: imports never write it";
    case ie::ImportSkip::Listed:
        return "on the import's skip list";
    case ie::ImportSkip::LineScanOnly:
        return "imports write it to line-scan cameras only";
    case ie::ImportSkip::None:
        break;
    }
    return {};
}

} // namespace companion
