// Who may be ticked, how many, what the header's box says, and which rows and columns the tree's node shows.
#include "WindowFixture.h"

namespace
{

class CheckLogic : public WindowFixture
{
protected:
    void SetUp() override { open(); }

    bool buttonsEnabled() const
    {
        EXPECT_EQ(probe->importButton->isEnabled(), probe->exportButton->isEnabled());
        return probe->importButton->isEnabled();
    }
    // Two on eth0, two on eth1.
    static QVector<Camera> twoInterfaces()
    {
        return {{"A1"}, {"A2"}, {"B1", 1, KX_TRANSPORT_GIGE, "eth1"}, {"B2", 1, KX_TRANSPORT_GIGE, "eth1"}};
    }
    QTreeWidgetItem* allDevices() const { return probe->tree->findItem(14, -1); }
    QStringList serials() const
    {
        QStringList texts;
        for (int row = 0; row < table().rowCount() && table().item(row, Serial); ++row)
            texts << text(row, Serial);
        return texts;
    }
};

} // namespace

TEST_F(CheckLogic, ButtonsAreEnabledWhileARowIsTicked)
{
    find(freeCameras(3));
    EXPECT_FALSE(buttonsEnabled());
    tick("S2");
    EXPECT_TRUE(isTicked(1));
    EXPECT_TRUE(buttonsEnabled());
    EXPECT_EQ(headerState(), Qt::Unchecked); // never partially checked
    tick("S2");
    EXPECT_FALSE(buttonsEnabled());
}

TEST_F(CheckLogic, HeaderIsCheckedWhenAllThatCanBeTickedAre)
{
    find({{"S1"}, {"S2", KX_AVAILABILITY_IN_USE}, {"S3"}});
    tick("S1");
    EXPECT_EQ(headerState(), Qt::Unchecked);
    tick("S3");
    EXPECT_EQ(headerState(), Qt::Checked);
    tick("S1");
    EXPECT_EQ(headerState(), Qt::Unchecked);
    EXPECT_TRUE(buttonsEnabled());
}

TEST_F(CheckLogic, HeaderIsCheckedAtTheLimitToo)
{
    open(2);
    find(freeCameras(5));
    tick("S1");
    EXPECT_EQ(headerState(), Qt::Unchecked);
    tick("S4");
    EXPECT_EQ(headerState(), Qt::Checked);
}

TEST_F(CheckLogic, BeyondTheLimitTheTickIsTakenBackWithAMessage)
{
    open(4);
    find(freeCameras(6));
    for (int row = 0; row < 5; ++row)
        tick(row);
    EXPECT_EQ(tickedRows(), (QList<int>{0, 1, 2, 3}));
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].kind, ORBCustom::DialogRequest::MessageBox);
    EXPECT_EQ(messages[0].parent, window.get());
    EXPECT_EQ(messages[0].title, "Prompt");
    EXPECT_EQ(messages[0].text, "Operation failed. You can operate 4 devices at most.");
    EXPECT_EQ(messages[0].detail, "");
    EXPECT_EQ(messages[0].hintIconStyle, 0);
    EXPECT_FALSE(messages[0].flag);
}

TEST_F(CheckLogic, TheLimitsMessageIsTranslated)
{
    open(1);
    find(freeCameras(2));
    speakChinese();
    tick("S1");
    tick("S2");
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].title, "提示");
    EXPECT_EQ(messages[0].text, "操作失败。最多可操作1台设备。");
}

TEST_F(CheckLogic, AnOverflowLeavesHeaderAndButtonsAsTheyAre)
{
    open(1);
    find(freeCameras(3));
    table().setCellCheckState(0, Check, Qt::Checked, false);
    table().setCellCheckState(1, Check, Qt::Checked, false);
    probe->header().setCheckState(Check, Qt::Unchecked, false);
    window->onCellCheckStateChanged(1, 0);
    EXPECT_EQ(messages.size(), 1);
    EXPECT_EQ(tickedRows(), QList<int>{0}); // one ticked, which is the limit, and yet:
    EXPECT_EQ(headerState(), Qt::Unchecked);
    EXPECT_FALSE(buttonsEnabled());
}

TEST_F(CheckLogic, AnOverflowFoundWhileFilteringUnticksTheFirstRowWhicheverItIs)
{
    open(2);
    find(twoInterfaces());
    select(interfaceOf("A1"));
    clickHeaderBox();
    select(interfaceOf("B1"));
    clickHeaderBox();
    ASSERT_EQ(tickedRows(), (QList<int>{0, 1, 2, 3}));
    select(allDevices());
    EXPECT_EQ(messages.size(), 1);
    EXPECT_EQ(tickedRows(), (QList<int>{1, 2, 3}));
    window->OnEndRefresh(); // still one too many, but the first row has no tick to lose
    EXPECT_EQ(messages.size(), 2);
    EXPECT_EQ(tickedRows(), (QList<int>{1, 2, 3}));
}

TEST_F(CheckLogic, HeaderClickTicksVisibleRowsUpToTheLimit)
{
    open(4);
    find(freeCameras(6));
    clickHeaderBox();
    EXPECT_EQ(tickedRows(), (QList<int>{0, 1, 2, 3}));
    EXPECT_EQ(headerState(), Qt::Checked);
    EXPECT_TRUE(buttonsEnabled());
    EXPECT_EQ(messages.size(), 0);
}

TEST_F(CheckLogic, HeaderClickCountsWhatIsTickedAlready)
{
    open(2);
    find(freeCameras(4));
    tick("S4");
    clickHeaderBox();
    EXPECT_EQ(tickedRows(), (QList<int>{0, 3}));
}

TEST_F(CheckLogic, HeaderClickLeavesTakenDevicesAndPlaceholdersAlone)
{
    find({{"S1", KX_AVAILABILITY_IN_USE}, {"S2"}, {"S3", KX_AVAILABILITY_UNREACHABLE}});
    clickHeaderBox();
    EXPECT_EQ(tickedRows(), QList<int>{1});
    for (int row = 3; row < 10; ++row)
        EXPECT_FALSE(table().item(row, Check));
    EXPECT_TRUE(buttonsEnabled());
}

TEST_F(CheckLogic, HeaderUncheckUnticksVisibleRowsAndDisablesTheButtons)
{
    find(twoInterfaces());
    clickHeaderBox();
    select(interfaceOf("B1"));
    EXPECT_EQ(headerState(), Qt::Checked);
    clickHeaderBox();
    EXPECT_EQ(headerState(), Qt::Unchecked);
    EXPECT_EQ(tickedRows(), (QList<int>{0, 1})); // the hidden rows keep their ticks
    EXPECT_FALSE(buttonsEnabled());
}

TEST_F(CheckLogic, HeaderClickWithNothingToTickStaysChecked)
{
    find({{"S1", KX_AVAILABILITY_IN_USE}});
    clickHeaderBox();
    EXPECT_EQ(headerState(), Qt::Checked);
    EXPECT_EQ(tickedRows(), QList<int>());
    EXPECT_FALSE(buttonsEnabled());
}

TEST_F(CheckLogic, APartiallyCheckedHeaderChangesNothing)
{
    find(freeCameras(2));
    tick("S1");
    probe->header().setCheckState(Check, Qt::PartiallyChecked, true);
    EXPECT_EQ(tickedRows(), QList<int>{0});
    EXPECT_TRUE(buttonsEnabled());
    EXPECT_EQ(headerState(), Qt::PartiallyChecked);
}

TEST_F(CheckLogic, HeaderClickNotifiesOfNoRow)
{
    find(freeCameras(3));
    int notified = 0;
    QObject::connect(&table(), &ORBCustomTableWidget::SigCellCheckStateChanged, [&] { ++notified; });
    clickHeaderBox();
    EXPECT_EQ(notified, 0);
}

// The new row is still hidden when it is counted: with nothing else ticked the header falls back and the
// buttons stay as they were.
TEST_F(CheckLogic, AFreeDeviceUnderACheckedHeaderIsTickedButNotCountedYet)
{
    clickHeaderBox();
    ASSERT_EQ(headerState(), Qt::Checked);
    find(freeCameras(1));
    EXPECT_TRUE(isTicked(0));
    EXPECT_FALSE(table().isRowHidden(0));
    EXPECT_EQ(headerState(), Qt::Unchecked);
    EXPECT_FALSE(buttonsEnabled());
    window->OnEndRefresh();
    EXPECT_EQ(headerState(), Qt::Checked);
    EXPECT_TRUE(buttonsEnabled());
}

TEST_F(CheckLogic, AFreeDeviceUnderACheckedHeaderMayPassTheLimitUnnoticed)
{
    open(2);
    find(freeCameras(2));
    clickHeaderBox();
    find(freeCameras(3));
    EXPECT_EQ(tickedRows(), (QList<int>{0, 1, 2}));
    EXPECT_EQ(messages.size(), 0);
    EXPECT_EQ(headerState(), Qt::Checked);
    window->OnEndRefresh();
    EXPECT_EQ(messages.size(), 1);
}

TEST_F(CheckLogic, ATakenDeviceUnderACheckedHeaderIsNotTicked)
{
    find(freeCameras(1));
    clickHeaderBox();
    find({{"S1"}, {"S2", KX_AVAILABILITY_IN_USE}, {"S3"}});
    EXPECT_EQ(tickedRows(), (QList<int>{0, 2}));
}

TEST_F(CheckLogic, AnUpdateUnderACheckedHeaderTicksAFreeDevice)
{
    find({{"S1"}, {"S2", KX_AVAILABILITY_IN_USE}});
    tick("S1");
    ASSERT_EQ(headerState(), Qt::Checked);
    find({{"S1"}, {"S2"}});
    EXPECT_EQ(tickedRows(), (QList<int>{0, 1}));
    EXPECT_EQ(headerState(), Qt::Checked);
}

TEST_F(CheckLogic, HeaderAndButtonsAreEvaluatedBeforeADevicesRowGoes)
{
    find(freeCameras(2));
    tick("S1");
    ASSERT_EQ(headerState(), Qt::Unchecked);
    window->onDeleteDevice(item("S2"));
    // All that is left is ticked, but while S2 was still there it was not all.
    EXPECT_EQ(headerState(), Qt::Unchecked);
    EXPECT_TRUE(buttonsEnabled());
}

TEST_F(CheckLogic, ADeletedDevicesRowNotifiesEvenWithoutATick)
{
    find(freeCameras(2));
    table().setCellCheckState(0, Check, Qt::Checked, false); // not evaluated
    EXPECT_FALSE(buttonsEnabled());
    QList<QPair<int, int>> notified;
    int rowsThen = 0;
    QObject::connect(&table(), &ORBCustomTableWidget::SigCellCheckStateChanged, [&](int row, int column) {
        notified << qMakePair(row, column);
        rowsThen += table().IsHaveCheckBox(1, Check);
    });
    window->onDeleteDevice(item("S2"));
    EXPECT_EQ(notified, (QList<QPair<int, int>>{{1, 0}}));
    EXPECT_EQ(rowsThen, 1); // its row was still there
    EXPECT_TRUE(buttonsEnabled());
}

TEST_F(CheckLogic, NodesShowTheDevicesBelowThem)
{
    find(twoInterfaces());
    select(interfaceOf("A1"));
    EXPECT_EQ(hiddenRows(), (QList<int>{2, 3}));
    select(interfaceOf("B1"));
    EXPECT_EQ(hiddenRows(), (QList<int>{0, 1}));
    select(interfaceOf("B1")->parent()); // the transport
    EXPECT_EQ(hiddenRows(), QList<int>());
    select(allDevices());
    EXPECT_EQ(hiddenRows(), QList<int>());
    EXPECT_EQ(table().rowCount(), 10);
}

TEST_F(CheckLogic, ACamerasOwnNodeHidesItsRowToo)
{
    find(twoInterfaces());
    select(item("A1"));
    EXPECT_EQ(hiddenRows(), (QList<int>{0, 1, 2, 3}));
}

TEST_F(CheckLogic, WithoutACurrentNodeEveryDeviceIsHidden)
{
    find(twoInterfaces());
    select(nullptr);
    window->OnTreeSelectesChanged();
    EXPECT_EQ(hiddenRows(), (QList<int>{0, 1, 2, 3}));
    EXPECT_TRUE(table().isColumnHidden(PortId));
}

TEST_F(CheckLogic, ARowWhoseCameraIsUnknownStaysAsItIs)
{
    find(twoInterfaces());
    table().item(2, Check)->setData(Qt::UserRole + 1, 4711);
    select(interfaceOf("A1"));
    EXPECT_EQ(hiddenRows(), QList<int>{3});
}

TEST_F(CheckLogic, NewDevicesAppearOnlyUnderTheirNode)
{
    find({{"A1"}, {"B1", 1, KX_TRANSPORT_GIGE, "eth1"}});
    select(interfaceOf("A1"));
    find(twoInterfaces());
    EXPECT_FALSE(table().isRowHidden(rowOf("A2")));
    EXPECT_TRUE(table().isRowHidden(rowOf("B2")));
}

TEST_F(CheckLogic, HiddenRowsKeepTheirTickAndDoNotCount)
{
    find(twoInterfaces());
    tick("A1");
    EXPECT_TRUE(buttonsEnabled());
    select(interfaceOf("B1"));
    EXPECT_FALSE(buttonsEnabled());
    EXPECT_TRUE(isTicked(rowOf("A1")));
    tick("B1");
    tick("B2");
    EXPECT_EQ(headerState(), Qt::Checked); // all that can be seen
    select(allDevices());
    EXPECT_EQ(headerState(), Qt::Unchecked);
    EXPECT_EQ(tickedRows(), (QList<int>{0, 2, 3}));
    EXPECT_TRUE(buttonsEnabled());
}

TEST_F(CheckLogic, SortingOrdersByTextWithPlaceholdersLast)
{
    find({{"b", 1, 1, "eth0", "M2"}, {"c", 1, 1, "eth0", "M1"}, {"a", 1, 1, "eth0", "M3"}});
    window->onSortTableWidget(Serial, true);
    EXPECT_EQ(serials(), (QStringList{"a", "b", "c"}));
    window->onSortTableWidget(Serial, false);
    EXPECT_EQ(serials(), (QStringList{"c", "b", "a"}));
    EXPECT_EQ(table().rowCount(), 10);
    window->onSortTableWidget(Model, true);
    EXPECT_EQ(serials(), (QStringList{"c", "b", "a"}));
}

TEST_F(CheckLogic, AHeaderClickSortsAscendingFirst)
{
    find({{"b"}, {"c"}, {"a"}});
    window->show();
    handleEvents();
    const int x = probe->header().sectionViewportPosition(Serial) + 30;
    QTest::mouseClick(probe->header().viewport(), Qt::LeftButton, {}, {x, 16});
    EXPECT_EQ(serials(), (QStringList{"a", "b", "c"}));
    QTest::mouseClick(probe->header().viewport(), Qt::LeftButton, {}, {x, 16});
    EXPECT_EQ(serials(), (QStringList{"c", "b", "a"}));
}

TEST_F(CheckLogic, WhatBelongsToARowIsSortedWithIt)
{
    find({{"c"}, {"b", 1, KX_TRANSPORT_GIGE, "eth1"}, {"a"}});
    tick("c");
    table().setDetailTip(rowOf("a"), Operation, "tip of a");
    select(interfaceOf("a"));
    ASSERT_EQ(hiddenRows(), QList<int>{1});
    window->onSortTableWidget(Serial, true);
    EXPECT_EQ(tickedRows(), QList<int>{2});
    EXPECT_EQ(table().detailTip(0, Operation), "tip of a");
    EXPECT_EQ(probe->findRow(idOf("a")), 0);
    EXPECT_EQ(probe->findRow(idOf("c")), 2);
    EXPECT_EQ(hiddenRows(), QList<int>{rowOf("b")});
    tick("a");
    EXPECT_TRUE(isTicked(0));
}

TEST_F(CheckLogic, SortingByStatusKeepsTheOrder)
{
    find({{"a", KX_AVAILABILITY_UNREACHABLE}, {"b"}, {"c", KX_AVAILABILITY_IN_USE}});
    window->onSortTableWidget(Status, false);
    EXPECT_EQ(serials(), (QStringList{"a", "b", "c"}));
    window->onSortTableWidget(Status, true);
    EXPECT_EQ(serials(), (QStringList{"a", "b", "c"}));
}

TEST_F(CheckLogic, FillingNeverMovesRows)
{
    find({{"c"}, {"a"}});
    window->onSortTableWidget(Serial, true);
    ASSERT_EQ(serials(), (QStringList{"a", "c"}));
    find({{"c"}, {"a"}, {"b"}});
    EXPECT_EQ(serials(), (QStringList{"a", "c", "b"}));
}
