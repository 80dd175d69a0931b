#include "iefeatures/cameras/DescriptionWords.h"

#include "iefeatures/cameras/FeatureReader.h"

#include "jobs/description/FeatureIndex.h"
#include "jobs/export/RegisterEvaluator.h"

#include <QRegularExpression>
#include <QSet>

namespace companion
{
namespace
{

// The elements by which the value of one node comes from another.
const char* const kReferences[] = {"pVariable", "pValue"};

bool reaches(const QMap<QString, QDomElement>& nodes, const QString& from, const QString& to)
{
    QStringList ahead{from};
    QSet<QString> seen;
    while (!ahead.isEmpty()) {
        const QString name = ahead.takeLast();
        if (name == to)
            return true;
        if (seen.contains(name))
            continue;
        seen.insert(name);
        const QDomElement node = nodes.value(name);
        for (const char* reference : kReferences)
            for (QDomElement child = node.firstChildElement(reference); !child.isNull();
                 child = child.nextSiblingElement(reference))
                ahead += child.text();
    }
    return false;
}

} // namespace

// As an export's worker has it, so that what it has written is understood as it was meant.
struct DescriptionWords::Parsed
{
    explicit Parsed(KX_HANDLE& handle, bool isGigE)
    {
        if (index.fetch(handle) != ie::FeatureIndex::Fetched::Indexed)
            return;
        index.generateSelectorMap();
        evaluator = std::make_unique<RegisterEvaluator>(handle, nodes, pairs, isGigE, budget);
    }

    QDomDocument document;
    QMap<QString, QDomElement> nodes;
    QMap<QString, QString> categories;
    QStringList features;
    QStringList categoryNames;
    QMap<QString, QStringList> selected;
    QList<SelectorPair> pairs;
    ie::FeatureIndex index{{document, nodes, categories, features, categoryNames, selected, pairs}};
    ie::ExportBudget budget;
    std::unique_ptr<RegisterEvaluator> evaluator; // null: there is no description
};

DescriptionWords::DescriptionWords(KX_HANDLE handle, bool isGigE) : m_handle(handle), m_isGigE(isGigE) {}

DescriptionWords::~DescriptionWords() = default;

DescriptionWords::Parsed& DescriptionWords::parsed()
{
    if (!m_parsed)
        m_parsed = std::make_unique<Parsed>(m_handle, m_isGigE);
    return *m_parsed;
}

QString DescriptionWords::category(const QString& feature)
{
    return parsed().categories.value(feature);
}

QString DescriptionWords::selectors(const QString& feature, const QString& variables)
{
    static const QRegularExpression group("\\[([^\\]:]+):(-?\\d+)\\]");
    QStringList places;
    for (auto found = group.globalMatch(variables); found.hasNext();) {
        const QRegularExpressionMatch one = found.next();
        places += place(feature, one.captured(1), one.captured(2).toLongLong());
    }
    places.removeDuplicates();
    return places.join(", ");
}

QString DescriptionWords::place(const QString& feature, const QString& variable, qint64 value)
{
    const QString key = feature + '\n' + variable;
    if (!m_places.contains(key))
        m_places[key] = placesOf(feature, variable);
    const QString known = m_places[key].value(value);
    return known.isEmpty() ? variable + '=' + QString::number(value) : known;
}

DescriptionWords::Places DescriptionWords::placesOf(const QString& feature, const QString& variable)
{
    Parsed& description = parsed();
    if (!description.evaluator || !description.evaluator->isSelectedFeature(feature))
        return {};
    for (const SelectorPair& pair : qAsConst(description.pairs)) {
        if (pair.strSelected != feature)
            continue;
        const Places places = placesBy(pair.strSelector, variable);
        if (!places.isEmpty())
            return places;
    }
    return {};
}

// An export walks over what the selector can be, and so the variable's values come in the same order.
DescriptionWords::Places DescriptionWords::placesBy(const QString& selector, const QString& variable)
{
    Parsed& description = parsed();
    const QDomElement node = description.nodes.value(selector);
    const QString linked = node.firstChildElement("pValue").text();
    const QString source = linked.isEmpty() ? selector : linked;
    QList<_FORMULA_RESULT_> values;
    QList<_FORMULA_RESULT_> entries;
    description.budget.beginFeature();
    if (!reaches(description.nodes, variable, source) ||
        !description.evaluator->getIntValue(description.nodes.value(variable), values) ||
        !description.evaluator->getIntValue(description.nodes.value(source), entries) ||
        values.size() != entries.size())
        return {};
    FeatureReader reader(m_handle);
    Places places;
    for (int i = 0; i < values.size(); ++i) {
        const QString name = reader.entryName(selector, uint32_t(entries[i].nValue));
        QString& place = places[values[i].nValue];
        place += place.isEmpty() ? selector + '=' : QString("|");
        place += name.isEmpty() ? QString::number(entries[i].nValue) : name;
    }
    return places;
}

} // namespace companion
