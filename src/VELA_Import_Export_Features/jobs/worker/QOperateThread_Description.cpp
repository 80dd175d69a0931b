#include "jobs/file/XmlSafety.h"
#include "jobs/rules/JobLog.h"
#include "jobs/worker/QOperateThread.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace
{

constexpr uint32_t kOrdinaryDescriptionSize = 0x300000;

// Zero-terminated text, bounded by its buffer all the same.
QString descriptionText(const void* pBuffer, uint32_t nSize)
{
    if (!pBuffer)
        return {};
    const char* pText = static_cast<const char*>(pBuffer);
    const void* pEnd = std::memchr(pText, 0, nSize);
    const std::size_t nLength = pEnd ? static_cast<const char*>(pEnd) - pText : nSize;
    return QString::fromUtf8(pText, int(std::min<std::size_t>(nLength, INT32_MAX)));
}

bool parse(const QString& strText, QDomDocument& document)
{
    return ie::isSafeToParse(strText) && document.setContent(strText);
}

} // namespace

void QOperateThread::GenerateFeatureXmlMap()
{
    m_pDescriptionBuffer.reset(ie::allocateZeroed(kOrdinaryDescriptionSize));
    if (!m_pDescriptionBuffer) {
        IE_JOB_LOG_PLAIN("CAMEAR_CREAT_BUF_FAILED");
        CloseDevice(); // reports an end as well; the job goes on and reports its own. Meant.
        return;
    }
    QDomDocument document; // a failure leaves the one of the last run, and what is indexed of it, as it is
    if (!parse(FetchDescription(), document)) {
        IE_JOB_LOG_PLAIN("Load xml failed.");
        return;
    }
    m_domGenICam = document;
    IndexDescription();
}

QString QOperateThread::FetchDescription()
{
    // Statuses are not looked at: an untouched length asks for a second fetch, an untouched buffer is an
    // empty text.
    uint32_t nSize = kOrdinaryDescriptionSize;
    uint32_t nLength = 0xFFFFFFFF;
    KX_XML_GetGenICamXML(m_hDevice, m_pDescriptionBuffer.get(), nSize, &nLength);
    if (nLength >= kOrdinaryDescriptionSize) {
        nSize = nLength;
        m_pDescriptionBuffer.reset();
        m_pDescriptionBuffer.reset(ie::allocateZeroed(nSize));
        if (m_pDescriptionBuffer)
            KX_XML_GetGenICamXML(m_hDevice, m_pDescriptionBuffer.get(), nSize, &nLength);
    }
    return descriptionText(m_pDescriptionBuffer.get(), nSize);
}

void QOperateThread::IndexDescription()
{
    m_mapNodeElement.clear();
    m_mapFeatureCategory.clear();
    m_lstFeatureNames.clear();
    m_mapSelectorFeatures.clear();
    m_lstCategoryNames.clear();
    m_lstSelectorPairs.clear();

    const QDomElement root = m_domGenICam.documentElement();
    const QDomElement rootCategory = FindElementByName("Root", root.elementsByTagName("Category"));
    for (QDomElement child = rootCategory.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        m_lstCategoryNames.append(child.text());
    m_setCategoryNames = QSet<QString>(m_lstCategoryNames.cbegin(), m_lstCategoryNames.cend());
    WalkFeatureNodes(root);
}

void QOperateThread::WalkFeatureNodes(const QDomElement& parent)
{
    // Made once: this runs for every element of descriptions with tens of thousands of them.
    static const QString strNameAttribute("Name");
    static const QLatin1String listed("pFeature"), category("Category"), enumEntry("EnumEntry");
    for (QDomElement element = parent.firstChildElement(); !element.isNull();
         element = element.nextSiblingElement()) {
        const QString strName = element.attribute(strNameAttribute);
        const QString strTag = element.tagName();
        if (strTag == listed)
            TakeListedFeature(parent, element.text());
        else if (strTag == category)
            TakeCategory(strName);
        if (strTag == enumEntry)
            continue;
        if (!strName.isEmpty())
            m_mapNodeElement.insert(strName, element);
        WalkFeatureNodes(element);
    }
}

void QOperateThread::TakeListedFeature(const QDomElement& parent, const QString& strFeature)
{
    if (parent.tagName() != QLatin1String("Category"))
        return;
    const QString strCategory = parent.attribute("Name");
    if (!m_setCategoryNames.contains(strCategory))
        return;
    m_mapFeatureCategory[strFeature] = strCategory;
    m_lstFeatureNames.append(strFeature);
}

// Depends on the order of the description: a category that stands before the list that names it stays out.
// Meant.
void QOperateThread::TakeCategory(const QString& strName)
{
    const auto itListedBy = m_mapFeatureCategory.constFind(strName);
    if (itListedBy == m_mapFeatureCategory.constEnd() || !m_setCategoryNames.contains(itListedBy.value()) ||
        m_setCategoryNames.contains(strName))
        return;
    m_lstCategoryNames.append(strName);
    m_setCategoryNames.insert(strName);
}

void QOperateThread::GenerateSelectorMap()
{
    m_mapSelectorFeatures.clear();
    m_lstSelectorPairs.clear();
    QStringList lstSelected;
    for (const QString& strName : qAsConst(m_lstFeatureNames)) {
        GetSelectedFeatures(strName, lstSelected);
        if (!lstSelected.isEmpty())
            m_mapSelectorFeatures[strName] = lstSelected;
    }
}

bool QOperateThread::GetNodeElement(const QString& strName, QDomElement& element) const
{
    const auto it = m_mapNodeElement.constFind(strName);
    if (it == m_mapNodeElement.constEnd())
        return false;
    element = it.value();
    return !element.isNull();
}

void QOperateThread::GetSelectedFeatures(const QString& strName, QStringList& lstSelected)
{
    lstSelected.clear();
    QDomElement element;
    if (!GetNodeElement(strName, element))
        return;
    for (QDomElement child = element.firstChildElement("pSelected"); !child.isNull();
         child = child.nextSiblingElement("pSelected")) {
        lstSelected.append(child.text());
        m_lstSelectorPairs.append({strName, child.text(), 0});
    }
}

QDomElement QOperateThread::FindElementByName(const QString& strName, const QDomNodeList& nodes) const
{
    for (int i = 0; i < nodes.count(); ++i) {
        const QDomElement element = nodes.item(i).toElement();
        if (element.attribute("Name") == strName)
            return element;
    }
    return {};
}

void QOperateThread::CollectNodeReferences(const QString& strName, QStringList* pReferences,
                                           QStringList* pVariables) const
{
    static const QStringList lstOnlyFollowed = {"pMin",      "pMax",           "pInc",
                                                "pIsLocked", "pIsImplemented", "pIsAvailable"};
    QDomElement element;
    if (!GetNodeElement(strName, element))
        return;
    if (element.tagName() == "StructEntry") {
        for (QDomElement sibling = element.previousSiblingElement("pInvalidator"); !sibling.isNull();
             sibling = sibling.previousSiblingElement("pInvalidator"))
            pReferences->append(sibling.text());
    }
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        const QString strTag = child.tagName();
        const QString strText = child.text();
        const bool bFollowed = strTag == "pVariable" || strTag == "pValue";
        if (bFollowed || strTag == "pInvalidator")
            pReferences->append(strText);
        if (strTag == "pVariable")
            pVariables->append(strText);
        if (bFollowed || lstOnlyFollowed.contains(strTag))
            CollectNodeReferences(strText, pReferences, pVariables);
    }
}
