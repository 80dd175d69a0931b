#include "jobs/import/FeaturesImport.h"

#include "jobs/rules/JobLog.h"

#include <algorithm>

namespace ie
{
namespace
{
constexpr int kLastCycle = 10;
}

bool FeaturesImport::ApplyFeatures(const FeaturesContent& content)
{
    for (const FeaturesContent::Entry& entry : content.entries)
        take(entry);
    for (m_cycle.number = 0;; ++m_cycle.number) {
        if (!applyCycle())
            return false;
        if ((m_cycle.pending < 1 && m_cycle.failed < 1) || m_cycle.number >= kLastCycle)
            return true;
    }
}

// A feature that is given several names stays out for any of them.
void FeaturesImport::take(const FeaturesContent::Entry& entry)
{
    if (entry.isComplex) {
        if (!m_isSkipped(entry.complex.name))
            m_blocks.push_back(entry.complex);
        return;
    }
    const PlainFeature& plain = entry.plain;
    const auto kind = featureKind(plain.type);
    if (kind && !plain.name.isEmpty() && !plain.value.isEmpty() &&
        std::none_of(entry.names.begin(), entry.names.end(), m_isSkipped))
        m_plain.push_back({*kind, plain});
}

bool FeaturesImport::applyCycle()
{
    if (m_cycle.number > kLastCycle)
        return giveUp({});
    m_cycle.failed = m_cycle.pending = 0;
    for (int pass = 1; pass <= kPlainPasses; ++pass)
        if (!applyPass(pass))
            return false;
    return std::all_of(m_blocks.begin(), m_blocks.end(),
                       [this](const ComplexFeature& block) { return m_registers.apply(block, m_cycle); });
}

bool FeaturesImport::applyPass(int pass)
{
    for (const Plain& plain : m_plain) {
        if (importPass(plain.kind) != pass || !KX_IS_LINE_FAILURE(setFeatureIntoDevice(plain)))
            continue;
        ++m_cycle.failed;
        if (m_cycle.number > kLastCycle)
            return giveUp(plain.feature);
    }
    return true;
}

// A guard: the cycles end before it.
bool FeaturesImport::giveUp(const PlainFeature& at)
{
    IE_JOB_LOG(QString("setFeatureIntoDevice failed.featureName:%1 value:%2").arg(at.name, at.value));
    return false;
}

// The status of the last call to the camera.
KX_Status FeaturesImport::setFeatureIntoDevice(const Plain& plain)
{
    const PlainFeature& feature = plain.feature;
    const FeatureReading reading = readFeature(m_camera, plain.kind, feature.name);
    // Texts are compared, not numbers. A value that cannot be read is written all the same. Both are meant.
    if (reading.isGood() && reading.text == feature.value)
        return KX_OK;
    int code = static_cast<int>(reading.status);
    if (!writeFeature(m_camera, plain.kind, feature.name, feature.value, &code))
        ++m_cycle.pending;
    return static_cast<KX_Status>(code);
}

} // namespace ie
