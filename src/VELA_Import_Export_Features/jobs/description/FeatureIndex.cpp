#include "jobs/description/FeatureIndex.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace ie
{
namespace
{

constexpr uint32_t kOrdinaryDescriptionSize = 0x300000;

// Zero-terminated text, bounded by its buffer all the same.
QString descriptionText(const void* buffer, uint32_t size)
{
    if (!buffer)
        return {};
    const char* text = static_cast<const char*>(buffer);
    const void* end = std::memchr(text, 0, size);
    const std::size_t length = end ? static_cast<const char*>(end) - text : size;
    return QString::fromUtf8(text, int(std::min<std::size_t>(length, INT32_MAX)));
}

} // namespace

FeatureIndex::Fetched FeatureIndex::fetch(KX_HANDLE handle)
{
    m_buffer.reset(allocateZeroed(kOrdinaryDescriptionSize));
    if (!m_buffer)
        return Fetched::NoMemory;
    return index(fetchText(handle)) ? Fetched::Indexed : Fetched::NotLoaded;
}

QString FeatureIndex::fetchText(KX_HANDLE handle)
{
    // Statuses are not looked at: an untouched length asks for a second fetch, an untouched buffer is an
    // empty text.
    uint32_t size = kOrdinaryDescriptionSize;
    uint32_t length = 0xFFFFFFFF;
    KX_XML_GetGenICamXML(handle, m_buffer.get(), size, &length);
    if (length >= kOrdinaryDescriptionSize) {
        size = length;
        m_buffer.reset();
        m_buffer.reset(allocateZeroed(size));
        if (m_buffer)
            KX_XML_GetGenICamXML(handle, m_buffer.get(), size, &length);
    }
    return descriptionText(m_buffer.get(), size);
}

bool FeatureIndex::index(const QString& description)
{
    const auto indexed = indexedDescription(description);
    if (!indexed)
        return false; // the last one stays, and what is indexed of it
    m_indexed = indexed;
    m.document = indexed->document;
    m.nodes = indexed->nodes;
    m.featureCategory = indexed->featureCategory;
    m.featureNames = indexed->featureNames;
    m.categoryNames = indexed->categoryNames;
    m.selectorFeatures.clear();
    m.selectorPairs.clear();
    return true;
}

void FeatureIndex::generateSelectorMap()
{
    m.selectorFeatures.clear();
    m.selectorPairs.clear();
    QStringList selected;
    for (const QString& name : qAsConst(m.featureNames)) {
        selectedFeatures(name, selected);
        if (!selected.isEmpty())
            m.selectorFeatures[name] = selected;
    }
}

bool FeatureIndex::nodeElement(const QString& name, QDomElement& element) const
{
    const auto it = m.nodes.constFind(name);
    if (it == m.nodes.constEnd())
        return false;
    element = it.value();
    return !element.isNull();
}

void FeatureIndex::selectedFeatures(const QString& name, QStringList& selected)
{
    selected.clear();
    QDomElement element;
    if (!nodeElement(name, element))
        return;
    for (QDomElement child = element.firstChildElement("pSelected"); !child.isNull();
         child = child.nextSiblingElement("pSelected")) {
        selected.append(child.text());
        m.selectorPairs.append({name, child.text(), 0});
    }
}

QDomElement FeatureIndex::findElement(const QString& name, const QDomNodeList& nodes)
{
    for (int i = 0; i < nodes.count(); ++i) {
        const QDomElement element = nodes.item(i).toElement();
        if (element.attribute("Name") == name)
            return element;
    }
    return {};
}

void FeatureIndex::collectReferences(const QString& name, QStringList* references,
                                     QStringList* variables) const
{
    static const QStringList onlyFollowed = {"pMin",      "pMax",           "pInc",
                                             "pIsLocked", "pIsImplemented", "pIsAvailable"};
    QDomElement element;
    if (!nodeElement(name, element))
        return;
    if (element.tagName() == "StructEntry") {
        for (QDomElement sibling = element.previousSiblingElement("pInvalidator"); !sibling.isNull();
             sibling = sibling.previousSiblingElement("pInvalidator"))
            references->append(sibling.text());
    }
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        const QString tag = child.tagName();
        const QString text = child.text();
        const bool isFollowed = tag == "pVariable" || tag == "pValue";
        if (isFollowed || tag == "pInvalidator")
            references->append(text);
        if (tag == "pVariable")
            variables->append(text);
        if (isFollowed || onlyFollowed.contains(tag))
            collectReferences(text, references, variables);
    }
}

} // namespace ie
