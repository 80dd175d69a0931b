#include "window/ImportExportFeaturesSelectedWidget.h"

#include "window/LocalConfig.h"

#include <QEvent>

static_assert(ImportExportFeaturesSelectedWidget::kAllBox == LocalConfig::kColumnBits,
              "one box per column, then All");

ImportExportFeaturesSelectedWidget::ImportExportFeaturesSelectedWidget(QWidget* parent)
    : ORBCustomMainWindow(parent)
{
    cSetTitleVisible(false);
    cSetBorderColor("#8F8B88", ORBCustom::BorderAllRounded, ORBCustom::StatusNormal);
    if (!BuildBoxes()) {
        qCritical("The column chooser could not be built.");
        return;
    }
    LoadChoice();
}

ImportExportFeaturesSelectedWidget::~ImportExportFeaturesSelectedWidget() = default;

bool ImportExportFeaturesSelectedWidget::BuildBoxes()
{
    m_pButtonGroup = new QButtonGroup(this);
    m_pButtonGroup->setExclusive(false);
    QWidget* pCentral = new QWidget(this);
    m_pLayout = new QVBoxLayout(pCentral);
    m_pLayout->setContentsMargins(16, 20, 16, 20);
    m_pLayout->setSpacing(10);
    for (int i = 0; i < kBoxCount; ++i) {
        m_pCheckBoxes[i] = new ORBCustomCheckBox(pCentral, 1);
        m_pCheckBoxes[i]->setFixedHeight(30);
        m_pCheckBoxes[i]->setMinimumWidth(1); // the pop-up's width is given: a longer text must not widen it
        m_pCheckBoxes[i]->cSetFontColor(ORBCustom::fontColor(1));
        m_pButtonGroup->addButton(m_pCheckBoxes[i], i);
        m_pLayout->addWidget(m_pCheckBoxes[i]);
    }
    SetTexts();
    cSetCentralWidget(pCentral);
    return connect(m_pButtonGroup, &QButtonGroup::idClicked, this,
                   &ImportExportFeaturesSelectedWidget::OnBtnClicked);
}

void ImportExportFeaturesSelectedWidget::SetTexts()
{
    const QString texts[kBoxCount] = {tr("Port ID"),          tr("Model Name"),  tr("Device User ID"),
                                      tr("Serial Number"),    tr("MAC Address"), tr("Status"),
                                      tr("Operation Status"), tr("All")};
    for (int i = 0; i < kBoxCount; ++i) {
        m_pCheckBoxes[i]->setText(texts[i]);
        m_pCheckBoxes[i]->setAccessibleName(texts[i]);
    }
}

void ImportExportFeaturesSelectedWidget::LoadChoice()
{
    const int nMask = LocalConfig::columnMask(this);
    for (int i = 0; i < LocalConfig::kColumnBits; ++i)
        if (nMask & (1 << i))
            m_pCheckBoxes[i]->setChecked(true);
    m_pCheckBoxes[kAllBox]->setChecked((nMask & LocalConfig::kAllColumns) == LocalConfig::kAllColumns);
}

void ImportExportFeaturesSelectedWidget::SaveChoice()
{
    int nMask = 0;
    for (int i = 0; i < LocalConfig::kColumnBits; ++i)
        if (m_pCheckBoxes[i]->isChecked()) // a hidden box counts too
            nMask |= 1 << i;
    LocalConfig::setColumnMask(nMask, this);
}

void ImportExportFeaturesSelectedWidget::UpdateAllBox()
{
    bool bAll = true;
    for (int i = 0; i < kAllBox; ++i)
        if (!m_pCheckBoxes[i]->isHidden() && !m_pCheckBoxes[i]->isChecked())
            bAll = false;
    m_pCheckBoxes[kAllBox]->setChecked(bAll);
}

void ImportExportFeaturesSelectedWidget::OnBtnClicked(int nBtnIndex)
{
    if (nBtnIndex < 0 || nBtnIndex >= kBoxCount)
        return;
    const bool bChecked = m_pCheckBoxes[nBtnIndex]->isChecked();
    if (nBtnIndex == kAllBox) {
        for (int i = 0; i < kAllBox; ++i)
            m_pCheckBoxes[i]->setChecked(bChecked);
    } else {
        UpdateAllBox();
    }
    emit SigItemToggled(nBtnIndex, bChecked);
    SaveChoice();
}

void ImportExportFeaturesSelectedWidget::ShowPortIdBox(bool bShow)
{
    m_pCheckBoxes[kPortIdBox]->setVisible(bShow);
    UpdateAllBox();
}

void ImportExportFeaturesSelectedWidget::changeEvent(QEvent* pEvent)
{
    // Both hear of it, the plain one first. Meant.
    QWidget::changeEvent(pEvent); // NOLINT(bugprone-parent-virtual-call)
    if (pEvent->type() == QEvent::LanguageChange && m_pCheckBoxes[kAllBox])
        SetTexts();
    ORBCustomMainWindow::changeEvent(pEvent);
}
