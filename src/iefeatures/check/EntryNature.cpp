#include "iefeatures/check/EntryNature.h"

#include "iefeatures/cameras/CameraConnection.h"

namespace companion
{
namespace
{

const char* const kIgnored = "changes by itself, or is to be ignored";
constexpr qint64 kWord = 4; // bytes: registers that jobs were seen to fail at are told without a length

EntryVerdict verdictOf(Nature::Kind kind)
{
    switch (kind) {
    case Nature::Kind::Session:
        return EntryVerdict::Session;
    case Nature::Kind::Automatic:
        return EntryVerdict::Automatic;
    default:
        return EntryVerdict::State;
    }
}

Nature natureOf(FeatureNature& nature, qint64 length, const EntryCheck& entry)
{
    if (entry.address)
        return nature.ofRegister(entry.feature, *entry.address, length);
    return nature.of(entry.feature);
}

} // namespace

// What is broken in the file is the file's fault, whatever the feature is.
void tellApart(FeatureNature& nature, const CheckRule& rule, qint64 length, EntryCheck& entry)
{
    const bool differs = isAmiss(entry) || entry.verdict == EntryVerdict::WouldChange;
    if (!differs || entry.verdict == EntryVerdict::Broken)
        return;
    const Nature found = natureOf(nature, length, entry);
    if (found.kind == Nature::Kind::State || (found.kind != Nature::Kind::Setting && !rule.isStrict))
        entry.judge(verdictOf(found.kind), found.reason);
    else if (rule.ignored.match(entry.feature))
        entry.judge(EntryVerdict::Ignored, kIgnored);
    else
        return;
    entry.warnings.clear();
}

void tellApart(const ListedCamera& camera, const FeatureNature::Settled& settled, const CheckRule& rule,
               std::vector<EntryCheck>& failures)
{
    const KX_DeviceInfo& device = camera.device.stDeviceInfo;
    const CameraConnection connection(device, KX_ACCESS_MONITOR);
    if (connection.status() != KX_OK)
        return;
    FeatureReader reader(connection.handle());
    FeatureNature nature(reader, device.transportType == KX_TRANSPORT_GIGE, settled);
    for (EntryCheck& failure : failures)
        tellApart(nature, rule, kWord, failure);
}

} // namespace companion
