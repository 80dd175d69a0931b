#include "iefeatures/running/NetChanges.h"

#include "iefeatures/console/RegisterText.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace companion
{
namespace
{

// Outermost last; a circle of selectors is walked once.
void collect(const Selectors& direct, const QString& feature, QStringList& found)
{
    const auto known = direct.find(feature);
    if (known == direct.end())
        return;
    for (const QString& selector : known->second) {
        if (found.contains(selector))
            continue;
        found += selector;
        collect(direct, selector, found);
    }
}

using Values = std::map<QString, QString>;

// The selectors that were moved, as they stand now.
QString placeOf(const Change& change, const Selectors& selectors, const Values& now)
{
    const auto found = change.isRegister ? selectors.end() : selectors.find(change.feature);
    QStringList place;
    if (found != selectors.end())
        for (const QString& selector : found->second)
            if (const auto value = now.find(selector); value != now.end())
                place += selector + '=' + value->second;
    return place.join(", ");
}

QString keyOf(const Change& change)
{
    return change.isRegister ? QString::number(change.address) : change.feature + '\n' + change.under;
}

} // namespace

Selectors selectorsIn(const QByteArray& description)
{
    Selectors direct;
    QXmlStreamReader reader(description);
    QString node;
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const bool isNode =
            reader.attributes().hasAttribute("Name") && reader.name() != QLatin1String("EnumEntry");
        if (isNode)
            node = reader.attributes().value("Name").toString();
        else if (reader.name() == QLatin1String("pSelected"))
            direct[reader.readElementText(QXmlStreamReader::SkipChildElements).trimmed()] += node;
    }
    Selectors all;
    for (const auto& [feature, selectors] : direct)
        collect(direct, feature, all[feature]);
    return all;
}

std::vector<Change> netChanges(const std::vector<Change>& changes, const Selectors& selectors)
{
    Values now;
    for (const Change& change : changes)
        if (!change.isRegister)
            now.emplace(change.feature, change.from);
    std::vector<Change> net;
    std::map<QString, size_t> places;
    for (Change change : changes) {
        change.under = placeOf(change, selectors, now);
        const auto [place, isNew] = places.emplace(keyOf(change), net.size());
        if (isNew)
            net.push_back(change);
        else
            net[place->second].to = change.to;
        if (!change.isRegister)
            now[change.feature] = change.to;
    }
    const auto isNone = [](const Change& change) {
        return !change.from.isNull() && change.from == change.to;
    };
    net.erase(std::remove_if(net.begin(), net.end(), isNone), net.end());
    return net;
}

QString titleOf(const Change& change)
{
    const QString place = change.isRegister ? "register " + hexAddress(change.address) : change.under;
    if (change.feature.isEmpty())
        return place;
    return place.isEmpty() ? change.feature : change.feature + " (" + place + ')';
}

QStringList titlesOf(const std::vector<Change>& changes)
{
    QStringList titles;
    for (const Change& change : changes)
        titles += titleOf(change);
    return titles;
}

} // namespace companion
