#include "iefeatures/check/WriteSafety.h"

#include "gvcp/Gvcp.h"
#include "jobs/nodes/RegisterWords.h"
#include "jobs/rules/ControlFeature.h"

#include <QRegularExpression>

#include <algorithm>
#include <limits>

namespace companion
{
namespace
{

// As files have it: what jobs hold (exclusive access).
const char* const kOwnPrivilege = "1";

bool isPrivilege(const ie::FeaturesContent::Entry& entry)
{
    return !entry.isComplex && entry.plain.name == ie::kControlFeature;
}

// What imports take for 0 without being it, or for less. Not what is missing: an import ends there.
bool isNoNumber(const ie::RegisterValue& value)
{
    static const QRegularExpression zero("^(0x)?0+$");
    const bool isZero = value.address == 0 && zero.match(value.addressText).hasMatch();
    return !value.addressText.isEmpty() && value.address <= 0 && !isZero;
}

bool touches(qint64 address, qint64 length, qint64 place)
{
    return address < place + 4 && place < address + length;
}

bool takesControlAway(const ie::ComplexFeature& block, const ie::RegisterValue& value)
{
    const QString& content = value.to.isEmpty() ? value.content : value.to;
    const bool isOwn =
        value.address == gvcp::RegControlPrivilege && block.length == 4 && content == kOwnPrivilege;
    return (touches(value.address, block.length, gvcp::RegControlPrivilege) && !isOwn) ||
           touches(value.address, block.length, gvcp::RegControlSwitchoverKey);
}

bool isBeyondTheLine(qint64 address, bool isGigE)
{
    return isGigE && address > std::numeric_limits<quint32>::max();
}

// Null: nothing speaks against it.
QString dangerOf(const ie::ComplexFeature& block, const ie::RegisterValue& value, FeatureReader& reader,
                 bool isGigE)
{
    if (isNoNumber(value))
        return "the address \"" + value.addressText + "\" is no number";
    if (value.addressText.isEmpty() || value.address % 4 != 0 || isBeyondTheLine(value.address, isGigE))
        return {};
    if (isGigE && takesControlAway(block, value))
        return "the register says who controls the camera";
    if (!reader.isCovered(value.address, block.length))
        return "the camera's description has no register there";
    return {};
}

EntryCheck dangerous(const QString& feature, const QString& why)
{
    EntryCheck entry;
    entry.feature = feature;
    entry.judge(EntryVerdict::Broken, why);
    return entry;
}

void takeBlock(const ie::ComplexFeature& block, FeatureReader& reader, bool isGigE,
               std::vector<EntryCheck>& dangers)
{
    if (block.length <= 0 || block.length > ie::RegisterWords::kMaximumLength)
        return; // imports end there, with nothing of it written
    for (const ie::RegisterValue& value : block.values) {
        const QString why = dangerOf(block, value, reader, isGigE);
        if (why.isNull())
            continue;
        EntryCheck entry = dangerous(block.name, why);
        entry.isRegister = true;
        if (!isNoNumber(value))
            entry.address = value.address;
        entry.fileValue = value.to.isEmpty() ? value.content : value.to;
        dangers.push_back(entry);
    }
}

} // namespace

std::vector<EntryCheck> dangersIn(const ie::FeaturesContent& file, FeatureReader& reader, ImportSkips& skips,
                                  bool isGigE)
{
    std::vector<EntryCheck> dangers;
    for (const ie::FeaturesContent::Entry& entry : file.entries) {
        if (isGigE && isPrivilege(entry) && entry.plain.value == "0") {
            dangers.push_back(dangerous(entry.plain.name, "it would give control of the camera away"));
            dangers.back().fileValue = entry.plain.value;
        }
        if (entry.isComplex && skips.reason(entry.complex.name).isNull())
            takeBlock(entry.complex, reader, isGigE, dangers);
    }
    return dangers;
}

bool mayHoldDangers(const ie::FeaturesContent& file)
{
    return std::any_of(file.entries.begin(), file.entries.end(), [](const ie::FeaturesContent::Entry& entry) {
        return entry.isComplex || isPrivilege(entry);
    });
}

QString dangerText(const std::vector<EntryCheck>& dangers)
{
    return QString("The file has %1 that no import should write. Nothing was written; --force does it all "
                   "the same.")
        .arg(dangers.size() == 1 ? QString("an entry") : QString("%1 entries").arg(dangers.size()));
}

} // namespace companion
