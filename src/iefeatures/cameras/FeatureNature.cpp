#include "iefeatures/cameras/FeatureNature.h"

namespace companion
{
namespace
{

const char* const kNeverWritten = "the camera's description lets nobody write it";

} // namespace

Nature FeatureNature::of(const QString& feature)
{
    return ofFeature(feature, false);
}

Nature FeatureNature::ofBlock(const QString& feature)
{
    return ofFeature(feature, true);
}

// A description may call a register writable that GigE Vision does not.
Nature FeatureNature::ofRegister(const QString& feature, qint64 address, qint64 length)
{
    const Nature nature = m_isGigE ? natureOfGigEAddress(address) : Nature();
    if (nature.kind != Nature::Kind::Setting)
        return nature;
    if (!feature.isEmpty())
        return ofBlock(feature);
    return m_reader.isNeverWritten(address, length) ? Nature{Nature::Kind::State, kNeverWritten} : Nature();
}

Nature FeatureNature::ofFeature(const QString& feature, bool isPlaceKnown)
{
    Nature nature = natureOfName(feature);
    if (nature.kind == Nature::Kind::Setting)
        nature = ofDescription(feature, isPlaceKnown);
    return nature.kind == Nature::Kind::Setting ? ofFunctions(feature) : nature;
}

Nature FeatureNature::ofDescription(const QString& feature, bool isPlaceKnown)
{
    const std::optional<bool> isSetting = m_reader.isEverWritable(feature);
    if (!isSetting)
        return {};
    if (!*isSetting)
        return {Nature::Kind::State, kNeverWritten};
    const QString selector = movingSelector(feature, isPlaceKnown);
    if (selector.isEmpty())
        return {};
    return {Nature::Kind::State,
            "a window of data: what it shows hangs on " + selector + ", which is not in the file"};
}

// Of a register whose address is known a selector may still choose what lies there; one that leads to the
// address has been followed.
QString FeatureNature::movingSelector(const QString& feature, bool isPlaceKnown)
{
    const QStringList places = m_reader.relatedNames(feature, KX_RELATED_PLACE);
    QStringList candidates = m_reader.relatedNames(feature, KX_RELATED_SELECTORS);
    for (const QString& place : places)
        if (isPlaceKnown)
            candidates.removeAll(place);
        else
            candidates += place;
    for (const QString& selector : candidates)
        if (!m_settled.contains(selector) && canStandElsewhere(selector))
            return selector;
    return {};
}

// Not one that has a single entry, or a single number.
bool FeatureNature::canStandElsewhere(const QString& selector)
{
    if (!m_reader.isEverWritable(selector).value_or(true))
        return false;
    const FeatureReader::Reading entries = m_reader.read(ie::FeatureKind::Enumeration, selector);
    if (entries.enumeration)
        return entries.enumeration->supportedCount > 1;
    const FeatureReader::Reading number = m_reader.read(ie::FeatureKind::Integer, selector);
    return !number.integer || number.integer->minimum < number.integer->maximum;
}

Nature FeatureNature::ofFunctions(const QString& feature)
{
    QStringList functions = automaticFunctionsOf(feature);
    for (const QString& lock : m_reader.relatedNames(feature, KX_RELATED_LOCKS))
        if (isMovedByLock(feature, lock))
            functions += lock;
    for (const QString& function : functions)
        if (isSwitchedOn(function))
            return {Nature::Kind::Automatic, function + " moves it"};
    return {};
}

// One that the camera does not have, or does not tell, moves nothing; nor does one that the file wants off:
// what it moves in the camera is then to stand as the file says.
bool FeatureNature::isSwitchedOn(const QString& function)
{
    const auto known = m_switches.find(function);
    if (known != m_switches.end())
        return known->second;
    QString now = m_reader.read(ie::FeatureKind::Enumeration, function).text;
    if (now.isEmpty())
        now = m_reader.read(ie::FeatureKind::Boolean, function).text;
    const QString wanted = m_settled.value(function);
    const bool isOn = !now.isEmpty() && !isOff(function, now) && !isOff(function, wanted);
    return m_switches[function] = isOn;
}

// Features files have an enumeration's number, feature bags its name; a switch may be a boolean, too.
bool FeatureNature::isOff(const QString& function, const QString& text)
{
    bool isNumber = false;
    const uint32_t number = text.toUInt(&isNumber);
    const QString entry = isNumber ? m_reader.entryName(function, number) : QString();
    return entry.isEmpty() ? text == "Off" || text == "0" : entry == "Off";
}

} // namespace companion
