// The pop-up list of check boxes that chooses the device table's columns.
#pragma once

#include <StyledCtl/ORBCustomCheckBox.h>
#include <StyledCtl/ORBCustomMainWindow.h>

#include <QButtonGroup>
#include <QVBoxLayout>

class ImportExportFeaturesSelectedWidget : public ORBCustomMainWindow
{
    Q_OBJECT

public:
    static constexpr int kBoxCount = 8;
    static constexpr int kPortIdBox = 0;
    static constexpr int kAllBox = 7;

    explicit ImportExportFeaturesSelectedWidget(QWidget* parent = nullptr);
    ~ImportExportFeaturesSelectedWidget() override;

    // Changes neither the box's state nor the stored choice.
    void ShowPortIdBox(bool bShow);

signals:
    // After every click, before the choice is stored.
    void SigItemToggled(int nIndex, bool bChecked);

public slots:
    void OnBtnClicked(int nBtnIndex);

protected:
    void changeEvent(QEvent* pEvent) override;

private:
    bool BuildBoxes();
    void SetTexts();
    void LoadChoice();
    void SaveChoice();
    void UpdateAllBox();

    ORBCustomCheckBox* m_pCheckBoxes[kBoxCount] = {};
    QButtonGroup* m_pButtonGroup = nullptr;
    QVBoxLayout* m_pLayout = nullptr;
};
