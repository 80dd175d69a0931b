// The pop-up that chooses the table's columns.
#include "WindowFixture.h"

#include <QButtonGroup>
#include <QMetaMethod>
#include <QScreen>
#include <QSignalSpy>

namespace
{

class ColumnChooser : public WindowFixture
{
protected:
    void SetUp() override { open(); }

    ImportExportFeaturesSelectedWidget& chooser() const { return *probe->chooser; }
    QStringList texts() const
    {
        QStringList list;
        for (int id = 0; id < 8; ++id)
            list << probe->box(id).text();
        return list;
    }
    QList<int> checkedBoxes() const
    {
        QList<int> ids;
        for (int id = 0; id < 8; ++id)
            if (probe->box(id).isChecked())
                ids << id;
        return ids;
    }
    bool isAllChecked() const { return probe->box(7).isChecked(); }
    int mask() const { return setting(kMaskKey).toInt(); }
    // Below a node that does not allow the port id.
    void hidePortId()
    {
        find({{"U", 1, KX_TRANSPORT_USB3, "USB"}});
        select(interfaceOf("U"));
        ASSERT_TRUE(probe->box(0).isHidden());
    }
    // Opens the pop-up with the window's left edge there.
    void popUpAt(int x)
    {
        window->move(x, 0);
        window->show();
        handleEvents();
        window->OnCheckListBtn();
    }
    QPoint below(const QPoint& corner) const
    {
        return probe->checkListButton->mapToGlobal(corner) + QPoint(0, 2);
    }
};

const QList<int> kDefaults = {0, 1, 3, 5, 6};

} // namespace

TEST_F(ColumnChooser, EightBoxesInTheirOrder)
{
    EXPECT_EQ(texts(), (QStringList{"Port ID", "Model Name", "Device User ID", "Serial Number", "MAC Address",
                                    "Status", "Operation Status", "All"}));
    // Not the table's "PortID".
    EXPECT_EQ(table().horizontalHeaderItem(1)->text(), "PortID");
    QButtonGroup* group = chooser().findChild<QButtonGroup*>();
    ASSERT_TRUE(group);
    EXPECT_FALSE(group->exclusive());
    for (int id = 0; id < 8; ++id) {
        EXPECT_EQ(group->button(id), &probe->box(id));
        EXPECT_EQ(probe->box(id).minimumHeight(), 30);
        EXPECT_EQ(probe->box(id).maximumHeight(), 30);
        EXPECT_EQ(probe->box(id).cFontColor(), ORBCustom::fontColor(1));
    }
}

TEST_F(ColumnChooser, SlotAndSignalHaveTheirNames)
{
    const QMetaObject& meta = ImportExportFeaturesSelectedWidget::staticMetaObject;
    EXPECT_GE(meta.indexOfSlot("OnBtnClicked(int)"), 0);
    const int signal = meta.indexOfSignal("SigItemToggled(int,bool)");
    ASSERT_GE(signal, 0);
    EXPECT_EQ(meta.method(signal).parameterNames(), (QList<QByteArray>{"nIndex", "bChecked"}));
}

TEST_F(ColumnChooser, LookAndPlace)
{
    EXPECT_TRUE(qobject_cast<ORBCustomMainWindow*>(&chooser()));
    EXPECT_EQ(chooser().parentWidget(), window.get());
    EXPECT_TRUE(chooser().isHidden());
    EXPECT_TRUE(chooser().cTitleBar()->isHidden());
    EXPECT_EQ(chooser().cBorderColor(0), QColor("#8F8B88"));
    EXPECT_EQ(chooser().cBorderEdges(0), 4);
    const QLayout* layout = chooser().cCentralWidget()->layout();
    EXPECT_EQ(layout->contentsMargins(), QMargins(16, 20, 16, 20));
    EXPECT_EQ(layout->spacing(), 10);
    for (int id = 0; id < 8; ++id)
        EXPECT_EQ(layout->itemAt(id)->widget(), &probe->box(id));
}

TEST_F(ColumnChooser, TextsFollowTheLanguage)
{
    speakChinese();
    EXPECT_EQ(texts(), (QStringList{"端口ID", "型号名称", "设备用户ID", "序列号", "MAC地址", "状态",
                                    "操作状态", "全部"}));
    speakEnglish();
    EXPECT_EQ(texts().first(), "Port ID");
}

TEST_F(ColumnChooser, EveryClickIsToldOnceWithTheBoxAndItsState)
{
    QSignalSpy told(&chooser(), &ImportExportFeaturesSelectedWidget::SigItemToggled);
    probe->box(2).click();
    probe->box(2).click();
    probe->box(7).click();
    ASSERT_EQ(told.size(), 3); // "All" too is one
    EXPECT_EQ(told[0], (QVariantList{2, true}));
    EXPECT_EQ(told[1], (QVariantList{2, false}));
    EXPECT_EQ(told[2], (QVariantList{7, true}));
}

TEST_F(ColumnChooser, ChangesByTheProgramAreNotClicks)
{
    QSignalSpy told(&chooser(), &ImportExportFeaturesSelectedWidget::SigItemToggled);
    probe->box(2).setChecked(true);
    EXPECT_EQ(told.size(), 0);
    EXPECT_FALSE(QFile::exists(configFile()));
    EXPECT_TRUE(table().isColumnHidden(User));
}

TEST_F(ColumnChooser, AClickIsToldBeforeItIsStored)
{
    int stored = 0;
    QObject::connect(&chooser(), &ImportExportFeaturesSelectedWidget::SigItemToggled,
                     [&] { stored = mask(); });
    setSetting(kMaskKey, 99);
    probe->box(2).click();
    EXPECT_EQ(stored, 99);
    EXPECT_EQ(mask(), 107 + 4);
}

TEST_F(ColumnChooser, AllChecksAndUnchecksEveryBox)
{
    probe->box(7).click();
    EXPECT_EQ(checkedBoxes(), (QList<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(hiddenColumns(), QList<int>{Interface});
    EXPECT_EQ(mask(), 127);
    probe->box(7).click();
    EXPECT_EQ(checkedBoxes(), QList<int>());
    EXPECT_EQ(hiddenColumns(), (QList<int>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(mask(), 0);
}

TEST_F(ColumnChooser, AllFollowsTheOthers)
{
    EXPECT_EQ(checkedBoxes(), kDefaults);
    probe->box(2).click();
    EXPECT_FALSE(isAllChecked());
    probe->box(4).click();
    EXPECT_TRUE(isAllChecked());
    probe->box(1).click();
    EXPECT_FALSE(isAllChecked());
    EXPECT_EQ(mask(), 127 - 2);
    EXPECT_EQ(hiddenColumns(), (QList<int>{Model, Interface}));
}

TEST_F(ColumnChooser, EachBoxGovernsItsColumn)
{
    const int columns[] = {PortId, Model, User, Serial, Mac, Status, Operation};
    for (int id = 0; id < 7; ++id) {
        const bool wasHidden = table().isColumnHidden(columns[id]);
        probe->box(id).click();
        EXPECT_EQ(table().isColumnHidden(columns[id]), !wasHidden) << "box " << id;
        EXPECT_TRUE(table().isColumnHidden(Interface));
        EXPECT_FALSE(table().isColumnHidden(Check));
    }
}

TEST_F(ColumnChooser, AllShowsThePortOnlyWhereTheNodeAllowsIt)
{
    hidePortId();
    probe->box(7).click();
    EXPECT_TRUE(table().isColumnHidden(PortId));
    EXPECT_FALSE(table().isColumnHidden(User));
    EXPECT_TRUE(probe->box(0).isChecked()); // the hidden box follows all the same
    EXPECT_EQ(mask(), 127);
    select(probe->tree->findItem(14, -1));
    EXPECT_FALSE(table().isColumnHidden(PortId));
}

TEST_F(ColumnChooser, ThePortsOwnBoxAsksNoNode)
{
    hidePortId();
    probe->box(0).click(); // off
    window->OnSelectedChecked(0, true);
    EXPECT_FALSE(table().isColumnHidden(PortId));
}

TEST_F(ColumnChooser, ThePortIsAllowedUnderAllDevicesAndNetworkInterfaces)
{
    find({{"G"}, {"U", 1, KX_TRANSPORT_USB3, "USB"}, {"C", 1, KX_TRANSPORT_CAMERA_LINK, "CL"}});
    const auto allowed = [this](QTreeWidgetItem* node) {
        select(node);
        EXPECT_EQ(probe->box(0).isHidden(), table().isColumnHidden(PortId));
        return !table().isColumnHidden(PortId);
    };
    EXPECT_TRUE(allowed(interfaceOf("G")));
    EXPECT_FALSE(allowed(interfaceOf("U")));
    EXPECT_FALSE(allowed(interfaceOf("C")));
    EXPECT_FALSE(allowed(interfaceOf("G")->parent()));
    EXPECT_FALSE(allowed(item("G")));
    EXPECT_TRUE(allowed(probe->tree->findItem(14, -1)));
}

TEST_F(ColumnChooser, AtTheStartTheNodeIsNotAskedForThePort)
{
    setSetting(kMaskKey, 1);
    open();
    EXPECT_FALSE(table().isColumnHidden(PortId));
    EXPECT_FALSE(probe->box(0).isHidden());
}

TEST_F(ColumnChooser, HidingThePortsBoxRecountsAllAndChangesNothingElse)
{
    setSetting(kMaskKey, 126);
    open();
    EXPECT_FALSE(isAllChecked());
    QSignalSpy told(&chooser(), &ImportExportFeaturesSelectedWidget::SigItemToggled);
    hidePortId();
    EXPECT_TRUE(isAllChecked()); // every box that can be seen is checked
    EXPECT_FALSE(probe->box(0).isChecked());
    EXPECT_EQ(mask(), 126);
    EXPECT_EQ(told.size(), 0);
    select(probe->tree->findItem(14, -1));
    EXPECT_FALSE(probe->box(0).isHidden());
    EXPECT_FALSE(isAllChecked());
}

TEST_F(ColumnChooser, AHiddenUncheckedPortDoesNotKeepAllFromBeingChecked)
{
    setSetting(kMaskKey, 106);
    open();
    hidePortId();
    ASSERT_FALSE(
        chooser().isVisible()); // in a closed pop-up no box is visible; only the hidden one is left out
    probe->box(2).click();
    EXPECT_FALSE(isAllChecked());
    probe->box(4).click();
    EXPECT_TRUE(isAllChecked());
    EXPECT_EQ(mask(), 126); // the hidden box with its own state
}

TEST_F(ColumnChooser, AHiddenCheckedPortIsStoredAsChecked)
{
    hidePortId();
    probe->box(1).click();
    EXPECT_EQ(mask(), 107 - 2);
}

TEST_F(ColumnChooser, TheLastShownColumnStretchesButNeverTheStatus)
{
    const auto mode = [this](int column) { return probe->header().sectionResizeMode(column); };
    EXPECT_EQ(mode(Operation), QHeaderView::Stretch);
    probe->box(6).click(); // Operation Status off
    EXPECT_EQ(mode(Serial), QHeaderView::Stretch);
    EXPECT_EQ(mode(Status), QHeaderView::Fixed);
    probe->box(4).click(); // MAC Address on
    EXPECT_EQ(mode(Mac), QHeaderView::Stretch);
    EXPECT_EQ(mode(Serial), QHeaderView::Interactive);
    probe->box(7).click();
    probe->box(7).click(); // all off
    window->OnSelectedChecked(5, true);
    EXPECT_EQ(mode(Status), QHeaderView::Fixed);
}

TEST_F(ColumnChooser, AChoiceSetsWidthsAndAlignmentAgain)
{
    probe->box(7).click();
    const QMap<int, int> widths = {{1, 130}, {2, 170}, {3, 130}, {4, 162}, {6, 137}, {7, 54}};
    for (auto it = widths.cbegin(); it != widths.cend(); ++it)
        table().setColumnWidth(it.key(), 99);
    probe->header().setDefaultAlignment(Qt::AlignRight);
    window->OnSelectedChecked(1, true);
    for (auto it = widths.cbegin(); it != widths.cend(); ++it)
        EXPECT_EQ(table().columnWidth(it.key()), it.value()) << "column " << it.key();
    EXPECT_EQ(probe->header().defaultAlignment(), Qt::AlignLeft | Qt::AlignVCenter);
}

TEST_F(ColumnChooser, TheButtonOpensAndCloses)
{
    window->show();
    handleEvents();
    QTest::mouseClick(probe->checkListButton, Qt::LeftButton);
    EXPECT_TRUE(chooser().isVisible());
    EXPECT_EQ(chooser().windowType(), Qt::Popup);
    window->OnCheckListBtn();
    EXPECT_FALSE(chooser().isVisible());
}

TEST_F(ColumnChooser, OpensUnderTheButton)
{
    popUpAt(-700);
    EXPECT_EQ(chooser().pos(), below(probe->checkListButton->rect().bottomLeft()));
}

TEST_F(ColumnChooser, OpensRightAlignedAtTheScreensEdge)
{
    const int screen = QGuiApplication::primaryScreen()->size().width();
    popUpAt(screen - 1058);
    const QPoint right = below(probe->checkListButton->rect().bottomRight());
    EXPECT_EQ(chooser().pos(), right - QPoint(chooser().width(), 0));
    window->OnCheckListBtn();
    // Left-aligned as long as it just fits.
    const int left = below(probe->checkListButton->rect().bottomLeft()).x() - window->pos().x();
    popUpAt(screen - 176 - left);
    EXPECT_EQ(chooser().pos().x() + chooser().width(), screen);
    EXPECT_EQ(chooser().pos(), below(probe->checkListButton->rect().bottomLeft()));
    window->OnCheckListBtn();
    popUpAt(screen - 176 - left + 1);
    EXPECT_EQ(chooser().pos(), below(probe->checkListButton->rect().bottomRight()) - QPoint(176, 0));
}

TEST_F(ColumnChooser, TheSuitesLanguageDecidesTheWidthAtEveryOpening)
{
    popUpAt(-700);
    EXPECT_EQ(chooser().width(), 176);
    window->OnCheckListBtn();
    tests::suiteScript().language = "CH"; // the texts stay English
    window->OnCheckListBtn();
    EXPECT_EQ(chooser().width(), 134);
    window->OnCheckListBtn();
    tests::suiteScript().language = "other";
    window->OnCheckListBtn();
    EXPECT_EQ(chooser().width(), 134);
    window->OnCheckListBtn();
    tests::suiteScript().language = "ENG";
    speakChinese();
    window->OnCheckListBtn();
    EXPECT_EQ(chooser().width(), 176);
}
