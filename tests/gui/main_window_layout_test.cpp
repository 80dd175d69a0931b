// The window as it stands when it opens: places, sizes, colours, texts and names.
#include "WindowFixture.h"

#include <SuiteTools/SuiteTools.h>

#include <QMetaMethod>

namespace
{

class MainWindowLayout : public WindowFixture
{
protected:
    void SetUp() override { open(); }

    void show()
    {
        window->show();
        handleEvents();
    }
    QRect place(const QWidget* widget) const
    {
        return QRect(widget->mapTo(probe->stack->parentWidget(), QPoint(0, 0)), widget->size());
    }
    QList<ORBCustomLineWidget*> separators() const
    {
        return probe->progressPage->findChildren<ORBCustomLineWidget*>();
    }
};

QStringList headerTexts(const QTableWidget& table)
{
    QStringList texts;
    for (int column = 0; column < table.columnCount(); ++column)
        texts << table.horizontalHeaderItem(column)->text();
    return texts;
}

} // namespace

TEST_F(MainWindowLayout, SlotsStandInTheirOrderWithTheirParametersNames)
{
    const QMetaObject& meta = MainWidget::staticMetaObject;
    QStringList slotsSeen;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        slotsSeen << meta.method(i).methodSignature() + " " + meta.method(i).parameterNames().join(' ');
    EXPECT_EQ(slotsSeen,
              (QStringList{"OnBtnRefresh() ", "OnEndRefresh() ", "OnBtnImport() ", "OnBtnExport() ",
                           "OnShowMsg(QString,QString,QString) strTitle strContent strDetail",
                           "onNewDevice(QTreeWidgetItem*) pItem", "onDeleteDevice(QTreeWidgetItem*) pItem",
                           "onUpdateDevice(QTreeWidgetItem*) pItem", "OnTreeSelectesChanged() ",
                           "onCellCheckStateChanged(int,int) nRow nColumn",
                           "onHeaderCheckStateChanged(int) nColumn",
                           "onSortTableWidget(int,bool) nColumn bAscending",
                           "onBeginThread(long,uint) lCamerID nThreadType",
                           "onEndThread(long,uint,QString) lCameraID nThreadType strFilePath",
                           "onThreadInfo(long,QString,bool) nDeviceID strMsg bFailed", "onBackClicked() ",
                           "OnCheckListBtn() ", "OnSelectedChecked(int,bool) nIndex bChecked"}));
}

TEST_F(MainWindowLayout, StartsIdle)
{
    EXPECT_TRUE(qobject_cast<ORBCustomMainWindow*>(window.get()));
    EXPECT_FALSE(probe->haveSuccess);
    EXPECT_EQ(probe->running, 0);
    EXPECT_EQ(probe->succeeded, 0);
    EXPECT_EQ(probe->failed, 0);
    EXPECT_EQ(probe->operateType, -1);
    EXPECT_EQ(probe->lastPath, QString());
    EXPECT_TRUE(probe->workers.isEmpty());
    EXPECT_EQ(probe->counts(), (QStringList{"0", "0", "0"}));
    EXPECT_FALSE(probe->importButton->isEnabled());
    EXPECT_FALSE(probe->exportButton->isEnabled());
    EXPECT_TRUE(probe->checkListButton->isEnabled());
    EXPECT_TRUE(probe->loading->isHidden());
}

TEST_F(MainWindowLayout, DeviceLimitIsAskedForOnceAndTheEncodingSetLast)
{
    setSetting("General/EncodingType", 2);
    tests::resetSuiteTools();
    tests::suiteScript().programDataPath = folder.filePath("data");
    open(17);
    EXPECT_EQ(probe->supportNum, 17u);
    EXPECT_EQ(tests::suiteCalls("toolsSupportNum").size(), 1);
    EXPECT_EQ(tests::suiteCalls("SetEncodingType"), QStringList("SetEncodingType(2)"));
    EXPECT_EQ(tests::suiteCalls().mid(tests::suiteCalls().indexOf("toolsSupportNum()")),
              (QStringList{"toolsSupportNum()", "programDataPath()", "SetEncodingType(2)"}));
}

TEST_F(MainWindowLayout, TitleBarTellsTheVersionAndTheWindowTitleDoesNot)
{
    EXPECT_EQ(probe->mainLayout->parentWidget()->window(), window.get());
    EXPECT_EQ(window->cTitleBar()->cTitleText(), "Import/Export Features " + VELAInterface::curExeVersion());
    EXPECT_EQ(window->windowTitle(), "Import/Export Features");
    EXPECT_EQ(window->cTitleBar()->cTitleControls(), 7);
    EXPECT_EQ(window->cTitleBar()->minimumHeight(), 37);
    EXPECT_EQ(window->cTitleBar()->maximumHeight(), 37);
}

TEST_F(MainWindowLayout, SizeColourAndEdges)
{
    show();
    EXPECT_EQ(window->size(), QSize(1058, 632));
    EXPECT_EQ(window->minimumWidth(), 1058);
    EXPECT_EQ(window->cBackgroundColor(), QColor("#F2F3F5"));
    EXPECT_EQ(window->cStrechEdges(), 203);
}

TEST_F(MainWindowLayout, TreeAndTableStandBelowTheTopBar)
{
    show();
    EXPECT_EQ(probe->mainLayout->contentsMargins(), QMargins(25, 0, 25, 20));
    EXPECT_EQ(probe->mainLayout->spacing(), 0);
    const QWidget* central = probe->stack->parentWidget();
    EXPECT_EQ(central->size(), QSize(1058, 632 - 37));
    EXPECT_EQ(place(probe->stack), QRect(25, 0, 1008, 57));
    EXPECT_EQ(place(probe->tree), QRect(25, 57, 186, 632 - 37 - 57 - 20));
    EXPECT_EQ(place(probe->table), QRect(25 + 186, 57, 1008 - 186, 632 - 37 - 57 - 20));
    EXPECT_EQ(probe->stack->minimumHeight(), 57);
    EXPECT_EQ(probe->stack->maximumHeight(), 57);
}

TEST_F(MainWindowLayout, ButtonPageIsFirstAndShown)
{
    show();
    EXPECT_EQ(probe->stack->count(), 2);
    EXPECT_EQ(probe->stack->widget(0), probe->buttonPage);
    EXPECT_EQ(probe->stack->widget(1), probe->progressPage);
    EXPECT_EQ(probe->stack->currentWidget(), probe->buttonPage);
    const int y = place(probe->importButton).y();
    EXPECT_EQ(place(probe->importButton), QRect(25, y, 70, 26));
    EXPECT_EQ(place(probe->exportButton), QRect(25 + 70 + 10, y, 70, 26));
    EXPECT_EQ(place(probe->checkListButton), QRect(25 + 1008 - 28, y, 28, 26));
}

TEST_F(MainWindowLayout, ButtonsHaveNamesBordersAndImages)
{
    EXPECT_EQ(window->findChild<QWidget*>("ImportBtn"), probe->importButton);
    EXPECT_EQ(window->findChild<QWidget*>("ExportBtn"), probe->exportButton);
    EXPECT_EQ(window->findChild<QWidget*>("CheckListBtn"), probe->checkListButton);
    for (const ORBCustomPushButton* button :
         {probe->importButton, probe->exportButton, probe->checkListButton}) {
        EXPECT_EQ(button->cBorderColor(0), QColor("#D0DF00"));
        EXPECT_EQ(button->cBorderEdges(0), 3);
    }
    EXPECT_EQ(probe->checkListButton->cBackgroundImage(0), ":/VELA/btn/ic_more_normal.png");
    EXPECT_EQ(probe->checkListButton->cBackgroundImage(1), ":/VELA/btn/ic_more_click.png");
    EXPECT_EQ(probe->checkListButton->cBackgroundImage(2), ":/VELA/btn/ic_more_click.png");
    EXPECT_EQ(probe->checkListButton->cBackgroundImage(3), ":/VELA/btn/ic_more_disable.png");
    for (int status = 0; status < 4; ++status)
        EXPECT_TRUE(QFile::exists(probe->checkListButton->cBackgroundImage(status)));
}

TEST_F(MainWindowLayout, ProgressPageStandsInItsOrder)
{
    show();
    probe->stack->setCurrentWidget(probe->progressPage);
    handleEvents();
    ASSERT_EQ(separators().size(), 2);
    const QRect running = place(probe->runningText), success = place(probe->successText);
    EXPECT_EQ(place(probe->runningLabel).left(), 25);
    EXPECT_EQ(running.left(), 25 + 50);
    EXPECT_EQ(place(separators()[0]).left(), running.right() + 1 + 20);
    EXPECT_EQ(place(probe->successLabel).left(), place(separators()[0]).right() + 1 + 20);
    EXPECT_EQ(success.left(), place(probe->successLabel).right() + 1);
    EXPECT_EQ(place(separators()[1]).left(), success.right() + 1 + 20);
    EXPECT_EQ(place(probe->failedLabel).left(), place(separators()[1]).right() + 1 + 20);
    EXPECT_EQ(place(probe->failedText).left(), place(probe->failedLabel).right() + 1);
    EXPECT_EQ(place(probe->backButton).right(), 25 + 1008 - 1);
    EXPECT_EQ(probe->backButton->size(), QSize(86, 26));
    for (const ORBCustomLineWidget* line : separators()) {
        EXPECT_EQ(line->size(), QSize(1, 20));
        EXPECT_EQ(line->cBackgroundColor(), QColor("#BFBFBF"));
    }
}

TEST_F(MainWindowLayout, CountsAndCaptionsHaveTheirFontsAndColours)
{
    const QList<ORBCustomLabel*> counts = {probe->runningLabel, probe->successLabel, probe->failedLabel};
    const QStringList colours = {"#FAB700", "#00D53C", "#FC2F2F"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(counts[i]->cFontColor(), QColor(colours[i]));
        EXPECT_EQ(counts[i]->font().pixelSize(), 32);
        EXPECT_EQ(counts[i]->font().weight(), 75);
        EXPECT_TRUE(counts[i]->font().italic());
        EXPECT_EQ(counts[i]->alignment(), Qt::AlignCenter);
        EXPECT_EQ(counts[i]->minimumWidth(), 50);
        EXPECT_EQ(counts[i]->maximumWidth(), 50);
    }
    for (const ORBCustomLabel* caption : {probe->runningText, probe->successText, probe->failedText}) {
        EXPECT_EQ(caption->cFontColor(), QColor("#6C6C6C"));
        EXPECT_EQ(caption->font().pixelSize(), 12);
    }
}

TEST_F(MainWindowLayout, EnglishTexts)
{
    EXPECT_EQ(probe->importButton->text(), "Import");
    EXPECT_EQ(probe->exportButton->text(), "Export");
    EXPECT_EQ(probe->backButton->text(), "Back");
    EXPECT_EQ(probe->runningText->text(), "");
    EXPECT_EQ(probe->successText->text(), "");
    EXPECT_EQ(probe->failedText->text(), "Failed"); // no blank before it, unlike the other captions
    EXPECT_EQ(headerTexts(table()),
              (QStringList{"", "PortID", "Model Name", "Device User ID", "Serial Number", "Interface Type",
                           "MAC Address", "Status", "Operation Status"}));
}

TEST_F(MainWindowLayout, ChineseTextsAndBack)
{
    speakChinese();
    EXPECT_EQ(window->windowTitle(), "导入/导出属性");
    EXPECT_EQ(window->cTitleBar()->cTitleText(), "导入/导出属性 " + VELAInterface::curExeVersion());
    EXPECT_EQ(probe->importButton->text(), "导入");
    EXPECT_EQ(probe->exportButton->text(), "导出");
    EXPECT_EQ(probe->backButton->text(), "返回");
    EXPECT_EQ(probe->failedText->text(), "失败");
    EXPECT_EQ(probe->runningText->text(), ""); // no batch yet: none
    EXPECT_EQ(headerTexts(table()), (QStringList{"", "端口ID", "型号名称", "设备用户ID", "序列号", "接口类型",
                                                 "MAC地址", "状态", "操作状态"}));
    EXPECT_EQ(probe->box(0).text(), "端口ID");
    EXPECT_EQ(probe->box(7).text(), "全部");
    speakEnglish();
    EXPECT_EQ(window->windowTitle(), "Import/Export Features");
    EXPECT_EQ(headerTexts(table()).at(1), "PortID");
}

TEST_F(MainWindowLayout, AWindowBuiltWhileChineseIsSpokenIsChinese)
{
    closeWindow();
    speakChinese();
    open();
    EXPECT_EQ(window->windowTitle(), "导入/导出属性");
    EXPECT_EQ(probe->importButton->text(), "导入");
    EXPECT_EQ(headerTexts(table()).at(8), "操作状态");
}

TEST_F(MainWindowLayout, TheSuitesLanguageEventLoadsTheTranslationsAnew)
{
    qputenv("VELA_LANGUAGE", "CH");
    QEvent event(static_cast<QEvent::Type>(1100));
    event.ignore();
    QCoreApplication::sendEvent(window.get(), &event);
    EXPECT_TRUE(event.isAccepted());
    handleEvents();
    EXPECT_EQ(window->windowTitle(), "导入/导出属性");
    qputenv("VELA_LANGUAGE", "ENG");
    QCoreApplication::postEvent(window.get(), new QEvent(static_cast<QEvent::Type>(1100)));
    EXPECT_TRUE(waitFor([this] { return window->windowTitle() == "Import/Export Features"; }));
}

TEST_F(MainWindowLayout, OtherCustomEventsAreOnlyAccepted)
{
    qputenv("VELA_LANGUAGE", "CH");
    QEvent event(static_cast<QEvent::Type>(1101));
    event.ignore();
    QCoreApplication::sendEvent(window.get(), &event);
    EXPECT_TRUE(event.isAccepted());
    handleEvents();
    EXPECT_EQ(window->windowTitle(), "Import/Export Features");
}

TEST_F(MainWindowLayout, ClosesWhenIdle)
{
    show();
    EXPECT_TRUE(window->close());
    EXPECT_FALSE(window->isVisible());
}

TEST_F(MainWindowLayout, RefreshDoesNothingAndItsEndEvaluatesTheTicks)
{
    find(freeCameras(1));
    table().setCellCheckState(0, 0, Qt::Checked, false);
    window->OnBtnRefresh();
    EXPECT_FALSE(probe->importButton->isEnabled());
    window->OnEndRefresh();
    EXPECT_TRUE(probe->importButton->isEnabled());
    EXPECT_EQ(headerState(), Qt::Checked);
}
