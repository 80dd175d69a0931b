#include "jobs/description/IndexedDescription.h"

#include "jobs/description/DescriptionDom.h"
#include "jobs/description/FeatureIndex.h"
#include "jobs/file/XmlSafety.h"

#include <QSet>

#include <list>
#include <mutex>

namespace ie
{
namespace
{

// One walk over a description, which fills the index.
class Walk
{
public:
    explicit Walk(IndexedDescription& index)
        : m(index), m_categories(index.categoryNames.cbegin(), index.categoryNames.cend())
    {}

    void over(const QDomElement& parent)
    {
        // Made once: this runs for every element of descriptions with tens of thousands of them.
        static const QString nameAttribute("Name");
        static const QLatin1String listed("pFeature"), category("Category"), enumEntry("EnumEntry");
        for (QDomElement element = parent.firstChildElement(); !element.isNull();
             element = element.nextSiblingElement()) {
            const QString name = element.attribute(nameAttribute);
            const QString tag = element.tagName();
            if (tag == listed)
                takeListedFeature(parent, element.text());
            else if (tag == category)
                takeCategory(name);
            if (tag == enumEntry)
                continue;
            if (!name.isEmpty())
                m.nodes.insert(name, element);
            over(element);
        }
    }

private:
    void takeListedFeature(const QDomElement& parent, const QString& feature)
    {
        if (parent.tagName() != QLatin1String("Category"))
            return;
        const QString category = parent.attribute("Name");
        if (!m_categories.contains(category))
            return;
        m.featureCategory[feature] = category;
        m.featureNames.append(feature);
    }

    // Depends on the order of the description: a category that stands before the list that names it stays
    // out. Meant.
    void takeCategory(const QString& name)
    {
        const auto listedBy = m.featureCategory.constFind(name);
        if (listedBy == m.featureCategory.constEnd() || !m_categories.contains(listedBy.value()) ||
            m_categories.contains(name))
            return;
        m.categoryNames.append(name);
        m_categories.insert(name);
    }

    IndexedDescription& m;
    QSet<QString> m_categories; // the category names again
};

bool makeIndex(const QString& text, IndexedDescription& index)
{
    if (!isSafeToParse(text) || !parseDescription(text, index.document))
        return false;
    const QDomElement root = index.document.documentElement();
    const QDomElement rootCategory = FeatureIndex::findElement("Root", root.elementsByTagName("Category"));
    for (QDomElement child = rootCategory.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        index.categoryNames.append(child.text());
    Walk(index).over(root);
    return true;
}

struct Slot
{
    explicit Slot(const QString& theText) : text(theText) {}

    const QString text;
    std::once_flag made;
    bool isGood = false;
    IndexedDescription index;
};

// Those that somebody has.
std::shared_ptr<Slot> slotOf(const QString& text)
{
    static std::mutex mutex;
    static auto* const known = new std::list<std::weak_ptr<Slot>>; // workers may run while the process ends
    const std::lock_guard<std::mutex> lock(mutex);
    for (auto it = known->begin(); it != known->end();) {
        const std::shared_ptr<Slot> slot = it->lock();
        if (slot && slot->text == text)
            return slot;
        it = slot ? std::next(it) : known->erase(it);
    }
    const auto slot = std::make_shared<Slot>(text);
    known->push_back(slot);
    return slot;
}

} // namespace

std::shared_ptr<const IndexedDescription> indexedDescription(const QString& text)
{
    const std::shared_ptr<Slot> slot = slotOf(text);
    std::call_once(slot->made, [&] { slot->isGood = makeIndex(text, slot->index); });
    if (!slot->isGood)
        return nullptr;
    return {slot, &slot->index};
}

} // namespace ie
