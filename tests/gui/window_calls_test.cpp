// What the window calls of its libraries where only the call itself tells: order and arguments.
#include "BatchFixture.h"
#include "WindowCalls.h"

#include <QFileDialog>
#include <QPointer>
#include <QRegularExpression>

namespace
{

class WindowCalls : public BatchFixture
{
protected:
    void SetUp() override
    {
        open();
        m_built = tests::takeWindowCalls();
    }
    ~WindowCalls() override { tests::setWindowCallHook({}); }

    // Of the window's construction.
    QStringList built(const QString& pattern) const { return m_built.filter(QRegularExpression(pattern)); }

    // Since the last question.
    static QStringList made(const QString& pattern)
    {
        return tests::takeWindowCalls().filter(QRegularExpression(pattern));
    }

    static QStringList repeated(const QString& call, int times)
    {
        QStringList calls;
        while (times-- > 0)
            calls << call;
        return calls;
    }

private:
    QStringList m_built;
};

} // namespace

TEST_F(WindowCalls, EdgesThenShadowThenTheTitleBar)
{
    EXPECT_EQ(built("^cSet(Strech|Title)|Shadow").mid(0, 5),
              (QStringList{"cSetStrechEdges(203)", "cEnableDefualtShadow()", "cSetTitleText",
                           "cSetTitleControls(7)", "cSetTitleIcon(:/VELA/AppIcon/FeatureBag.png)"}));
}

TEST_F(WindowCalls, TheTitleBarsOwnControlsAreAppliedAgain)
{
    window->cTitleBar()->cSetTitleControls(ORBCustomTitleBar::ControlClose);
    tests::takeWindowCalls();
    speakChinese();
    EXPECT_EQ(made("^cSetTitleControls"), QStringList("cSetTitleControls(4)"));
}

TEST_F(WindowCalls, StyleSelectors)
{
    EXPECT_EQ(built("^ORBCustomPushButton"), repeated("ORBCustomPushButton, style 0", 4));
    EXPECT_EQ(built("^ORBCustomCheckBox"), repeated("ORBCustomCheckBox, style 1", 8));
    // Of each of the two separators by itself, and by the window.
    EXPECT_EQ(built("^cSetLineType"), repeated("cSetLineType(0)", 2 + 2));
}

TEST_F(WindowCalls, EveryButtonHandlesItsClicksItself)
{
    QStringList buttons = built("cSetControlClickEvent");
    buttons.sort();
    EXPECT_EQ(
        buttons,
        (QStringList{"BackBtn cSetControlClickEvent(true)", "CheckListBtn cSetControlClickEvent(true)",
                     "ExportBtn cSetControlClickEvent(true)", "ImportBtn cSetControlClickEvent(true)"}));
}

TEST_F(WindowCalls, SectionsAreWatchedOnTheWindowsOwnHeader)
{
    EXPECT_EQ(built("^connetSectionResized"), QStringList("connetSectionResized(true)"));
}

TEST_F(WindowCalls, TheTreesNodesThenItsTransportsThenItsCurrentNode)
{
    EXPECT_EQ(built("Types|^findItem"), (QStringList{"setVisibleItemTypes(3, 4, 1, 5, 14, 13)",
                                                     "updateDeviceTypes(5, true)", "findItem(14, -1)"}));
}

TEST_F(WindowCalls, TheSettingsBelongToTheWidgetThatAsks)
{
    // The chooser's columns, the table's columns, the encoding.
    EXPECT_EQ(built("^QSettings"),
              (QStringList{"QSettings, parent ImportExportFeaturesSelectedWidget",
                           "QSettings, parent MainWidget", "QSettings, parent MainWidget"}));
    probe->box(2).click();
    EXPECT_EQ(made("^QSettings"), QStringList("QSettings, parent ImportExportFeaturesSelectedWidget"));
    find(freeCameras(1));
    window->onUpdateDevice(item("S1"));
    EXPECT_EQ(made("^QSettings"), QStringList("QSettings, parent MainWidget"));
    window->OnTreeSelectesChanged();
    EXPECT_EQ(made("^QSettings"), QStringList("QSettings, parent MainWidget"));
}

TEST_F(WindowCalls, TheFileIsAskedForWithoutASelectedFilterOrOptions)
{
    window->OnBtnImport();
    EXPECT_EQ(made("^get"), QStringList("getOpenFileName, no selected filter, options 0"));
}

TEST_F(WindowCalls, TheFolderIsAskedForAmongFoldersOnly)
{
    window->OnBtnExport();
    EXPECT_EQ(made("^get"),
              QStringList(QString("getExistingDirectory, options %1").arg(int(QFileDialog::ShowDirsOnly))));
}

TEST_F(WindowCalls, TheBaseHearsOfANewLanguageLast)
{
    probe->operateType = 1;
    tests::takeWindowCalls();
    speakChinese();
    const QStringList calls = made("^(cSetTitleText|SetLabelText|MainWidget changeEvent)");
    EXPECT_EQ(calls,
              (QStringList{"cSetTitleText", "SetLabelText(正在导出属性...)", "MainWidget changeEvent"}));
}

TEST_F(WindowCalls, OneBusyDialogForEveryBatch)
{
    EXPECT_EQ(built("^ORBCustomLoadingDialog"), QStringList("ORBCustomLoadingDialog"));
    const QPointer<ORBCustomLoadingDialog> dialog = probe->loading;
    readyCameras(1);
    runExport(folder.path());
    runImport(importFile());
    EXPECT_EQ(made("^ORBCustomLoadingDialog"), QStringList());
    EXPECT_EQ(dialog, probe->loading);
}

// The busy dialog's text is the last thing that is set before it is shown: no signal has been handled yet.
TEST_F(WindowCalls, ABatchIsLaunchedWithCountsAtNoughtAndItsKindKnown)
{
    readyCameras(2);
    runExportTogether(2, folder.path());
    ASSERT_EQ(counts(), (QStringList{"0", "2", "0"}));
    for (ORBCustomLabel* label : {probe->runningLabel, probe->failedLabel})
        label->setText("left over");
    probe->running = probe->failed = 7;
    QStringList seen;
    int kind = -1;
    tests::setWindowCallHook([&](const QString& call) {
        if (!call.startsWith("SetLabelText"))
            return;
        seen = counts() + QStringList{QString::number(probe->running), QString::number(probe->succeeded),
                                      QString::number(probe->failed)};
        kind = probe->operateType;
    });
    runImport(importFile());
    EXPECT_EQ(seen, repeated("0", 6));
    EXPECT_EQ(kind, 0);
}

TEST_F(WindowCalls, TheSummaryOfExportsTakesTheLibrarysOwnTitleAndButton)
{
    readyCameras(1);
    runExport(folder.path());
    EXPECT_EQ(made("^ORBCustomSaveDone"), QStringList("ORBCustomSaveDoneHintDlg, \"\", \"\""));
}
