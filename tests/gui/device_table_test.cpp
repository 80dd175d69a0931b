// The device table: its set-up, and rows that come, change and go.
#include "WindowFixture.h"

#include <QPointer>
#include <QRegularExpression>

namespace
{

class DeviceTable : public WindowFixture
{
protected:
    void SetUp() override { open(); }

    QHeaderView::ResizeMode mode(int column) const { return probe->header().sectionResizeMode(column); }
    int filledRows() const
    {
        int count = 0;
        for (int row = 0; row < table().rowCount(); ++row)
            count += table().IsHaveCheckBox(row, Check);
        return count;
    }
    QStringList identity(int row) const
    {
        QStringList texts;
        for (int column = PortId; column <= Mac; ++column)
            texts << text(row, column);
        return texts;
    }
    QImage icon(int row) const { return picture(table().item(row, Status)->icon()); }
    static QImage picture(const QIcon& icon) { return icon.pixmap(34, 34).toImage(); }
    static QImage stateIcon(const QString& name) { return picture(QIcon(":/VELA/State/" + name)); }
    int statusCode(int row) const { return table().item(row, Status)->data(Qt::UserRole + 3).toInt(); }
    // Calls of a function of the suite's library, or of all, while the window refills a camera's row.
    QStringList refill(const QByteArray& serial, const QString& function)
    {
        tests::resetSuiteTools();
        tests::suiteScript().programDataPath = folder.filePath("data");
        window->onUpdateDevice(item(serial));
        return function.isEmpty() ? tests::suiteCalls() : tests::suiteCalls(function);
    }
};

} // namespace

TEST_F(DeviceTable, ColumnsHaveTheirWidthsAndModes)
{
    EXPECT_EQ(table().columnCount(), 9);
    setSetting(kMaskKey, 127);
    open();
    const QMap<int, int> widths = {{0, 38}, {1, 130}, {2, 170}, {3, 130}, {4, 162}, {6, 137}, {7, 54}};
    for (auto it = widths.cbegin(); it != widths.cend(); ++it)
        EXPECT_EQ(table().columnWidth(it.key()), it.value()) << "column " << it.key();
    EXPECT_EQ(mode(Check), QHeaderView::Fixed);
    EXPECT_EQ(mode(Status), QHeaderView::Fixed);
    EXPECT_EQ(mode(Operation), QHeaderView::Stretch);
    for (const int column : {PortId, Model, User, Serial, Mac})
        EXPECT_EQ(mode(column), QHeaderView::Interactive) << "column " << column;
}

TEST_F(DeviceTable, TheOperationColumnIsAtLeastAsWideAsGivenWhenNothingStretches)
{
    EXPECT_GE(table().columnWidth(Operation), 131);
}

TEST_F(DeviceTable, HeaderAndLook)
{
    EXPECT_EQ(probe->header().minimumHeight(), 32);
    EXPECT_EQ(probe->header().maximumHeight(), 32);
    EXPECT_EQ(probe->header().defaultAlignment(), Qt::AlignLeft | Qt::AlignVCenter);
    EXPECT_FALSE(probe->header().isSortEnabled(0));
    for (int column = 1; column <= 8; ++column)
        EXPECT_TRUE(probe->header().isSortEnabled(column)) << "column " << column;
    EXPECT_TRUE(table().showGrid());
    EXPECT_TRUE(table().alternatingRowColors());
    EXPECT_EQ(table().iconSize(), QSize(34, 34));
    EXPECT_FALSE(table().isSortingEnabled());
    probe->header().setCheckState(0, Qt::Checked, false); // kept only where a check box is
    EXPECT_EQ(headerState(), Qt::Checked);
}

TEST_F(DeviceTable, TreeIsSetUp)
{
    EXPECT_EQ(probe->tree->property("styleKey").toString(), "ToolTree");
    EXPECT_EQ(probe->tree->minimumWidth(), 186);
    EXPECT_EQ(probe->tree->maximumWidth(), 186);
    EXPECT_FALSE(probe->tree->itemsExpandable());
    ASSERT_TRUE(probe->tree->currentItem());
    EXPECT_EQ(probe->tree->currentItem(), probe->tree->findItem(14, -1));
    find({{"G"}, {"U", 1, KX_TRANSPORT_USB3, "USB"}, {"C", 1, KX_TRANSPORT_CAMERA_LINK, "CL"}});
    const auto type = [](QTreeWidgetItem* node) { return node->data(0, Qt::UserRole + 1).toInt(); };
    EXPECT_EQ(type(interfaceOf("G")), 1);
    EXPECT_EQ(type(interfaceOf("U")), 3);
    EXPECT_EQ(type(interfaceOf("C")), 4);
    EXPECT_EQ(type(interfaceOf("G")->parent()), 13);
}

TEST_F(DeviceTable, StartsWithTenPlaceholders)
{
    EXPECT_EQ(table().rowCount(), 10);
    for (int row = 0; row < 10; ++row) {
        EXPECT_EQ(table().rowHeight(row), 38);
        EXPECT_FALSE(table().isRowHidden(row));
        EXPECT_FALSE(table().IsHaveCheckBox(row, Check));
        for (int column = 0; column < 9; ++column)
            EXPECT_FALSE(table().item(row, column));
    }
}

TEST_F(DeviceTable, ANewDeviceFillsAPlaceholder)
{
    find(freeCameras(2));
    EXPECT_EQ(table().rowCount(), 10);
    EXPECT_EQ(filledRows(), 2);
    for (int column = 0; column < 9; ++column)
        EXPECT_TRUE(table().item(1, column)) << "column " << column;
    EXPECT_TRUE(table().IsHaveCheckBox(1, Check));
    EXPECT_FALSE(table().isRowHidden(1));
    EXPECT_EQ(table().item(1, Check)->data(Qt::UserRole + 1), QVariant(idOf("S2")));
    EXPECT_FALSE(table().item(1, Operation)->data(Qt::UserRole + 2).toBool());
    EXPECT_EQ(text(1, Operation), "");
    EXPECT_FALSE(table().item(2, Check));
}

TEST_F(DeviceTable, TheFirstRowIsSelected)
{
    find(freeCameras(3));
    ASSERT_EQ(table().selectionModel()->selectedRows().size(), 1);
    EXPECT_EQ(table().selectionModel()->selectedRows().first().row(), 0);
}

TEST_F(DeviceTable, TheEleventhDeviceInsertsARow)
{
    find(freeCameras(10));
    EXPECT_EQ(table().rowCount(), 10);
    find(freeCameras(12));
    EXPECT_EQ(table().rowCount(), 12);
    EXPECT_EQ(table().rowHeight(10), 38);
    EXPECT_EQ(table().rowHeight(11), 38);
    EXPECT_EQ(rowOf("S12"), 11);
}

TEST_F(DeviceTable, TenRowsRemainWhenDevicesLeave)
{
    find(freeCameras(10));
    find(freeCameras(9));
    EXPECT_EQ(table().rowCount(), 10);
    EXPECT_EQ(filledRows(), 9);
    EXPECT_EQ(table().rowHeight(9), 38);
    EXPECT_FALSE(table().item(9, Check));
    find(freeCameras(12));
    find(freeCameras(11));
    EXPECT_EQ(table().rowCount(), 11);
    find({});
    EXPECT_EQ(table().rowCount(), 10);
    EXPECT_EQ(filledRows(), 0);
}

TEST_F(DeviceTable, ANewDeviceTakesThePlaceAfterTheOthersThatAreLeft)
{
    find(freeCameras(3));
    find({{"S1"}, {"S3"}});
    EXPECT_EQ(rowOf("S3"), 1);
    find({{"S1"}, {"S3"}, {"S4"}});
    EXPECT_EQ(rowOf("S4"), 2);
}

TEST_F(DeviceTable, GigEIdentity)
{
    find({{"SN", 1, KX_TRANSPORT_GIGE, "eth7", "Model", "Mine", {}, 0xAABB, 0xCCDDEEFF}});
    EXPECT_EQ(identity(0), (QStringList{"", "Model", "Mine", "SN", "eth7", "AA:BB:CC:DD:EE:FF"}));
    EXPECT_EQ(refill("SN", "int2StringMacAddress"), QStringList("int2StringMacAddress(aabb, ccddeeff)"));
    EXPECT_EQ(refill("SN", "GetEncodeQStringFromUnChar"),
              (QStringList{"GetEncodeQStringFromUnChar(32)", "GetEncodeQStringFromUnChar(16)",
                           "GetEncodeQStringFromUnChar(16)"}));
}

TEST_F(DeviceTable, FieldsWithoutAZeroEndAtTheirLength)
{
    find({{"0123456789ABCDEF", 1, KX_TRANSPORT_GIGE, "eth0", QByteArray(32, 'M'), QByteArray(16, 'u')}});
    EXPECT_EQ(text(0, Model), QString(32, 'M'));
    EXPECT_EQ(text(0, User), QString(16, 'u'));
    EXPECT_EQ(text(0, Serial), "0123456789ABCDEF");
}

TEST_F(DeviceTable, Usb3Identity)
{
    find({{"U1", 1, KX_TRANSPORT_USB3, "USB", "Model", "Mine"}});
    EXPECT_EQ(identity(0), (QStringList{"", "Model", "Mine", "U1", "USB", ""}));
    EXPECT_EQ(refill("U1", "GetEncodeQStringFromUnChar"),
              (QStringList{"GetEncodeQStringFromUnChar(64)", "GetEncodeQStringFromUnChar(64)",
                           "GetEncodeQStringFromUnChar(64)"}));
    EXPECT_EQ(tests::suiteCalls("int2StringMacAddress"), QStringList());
}

TEST_F(DeviceTable, CameraLinkIdentityHasAPortAndNoUserName)
{
    find({{"C1", 1, KX_TRANSPORT_CAMERA_LINK, "CL", "Model", "unused", "port-3"}});
    EXPECT_EQ(identity(0), (QStringList{"port-3", "Model", "", "C1", "CL", ""}));
    EXPECT_EQ(refill("C1", "GetEncodeQStringFromUnChar"),
              (QStringList{"GetEncodeQStringFromUnChar(64)", "GetEncodeQStringFromUnChar(64)",
                           "GetEncodeQStringFromUnChar(64)"}));
}

TEST_F(DeviceTable, AnUnknownTransportIsARowWithoutIdentity)
{
    find({{"X", 1, 64, "pci"}});
    EXPECT_EQ(identity(0), (QStringList{"", "", "", "", "pci", ""}));
    EXPECT_FALSE(table().isRowHidden(0));
    EXPECT_EQ(statusCode(0), 1);
}

TEST_F(DeviceTable, OtherTransportsLeavePortAndMacAsTheyAre)
{
    find({{"C1", 1, KX_TRANSPORT_CAMERA_LINK, "CL", "Model", {}, "port-3"}});
    QTreeWidgetItem* camera = item("C1");
    StructDeviceInfo device = camera->data(0, Qt::UserRole + 3).value<StructDeviceInfo>();
    table().item(0, Mac)->setText("kept");
    device.stDeviceInfo = entryOf({"U1", 1, KX_TRANSPORT_USB3}).info;
    camera->setData(0, Qt::UserRole + 3, QVariant::fromValue(device));
    window->onUpdateDevice(camera);
    EXPECT_EQ(identity(0), (QStringList{"port-3", "Cam", "", "U1", "CL", "kept"}));
}

TEST_F(DeviceTable, ADeviceWithoutAParentHasNoInterface)
{
    QTreeWidgetItem lonely;
    StructDeviceInfo device;
    device.nDeviceID = 77;
    device.stDeviceInfo = entryOf({"L"}).info;
    lonely.setData(0, Qt::UserRole + 3, QVariant::fromValue(device));
    window->onNewDevice(&lonely);
    EXPECT_EQ(text(0, Interface), "");
    EXPECT_EQ(text(0, Serial), "L");
    EXPECT_TRUE(table().isRowHidden(0)); // the tree does not know it: its visibility is never decided
}

TEST_F(DeviceTable, StatusGroups)
{
    ASSERT_FALSE(stateIcon("use.png").isNull());
    ASSERT_NE(stateIcon("use.png"), stateIcon("notuse.png"));
    ASSERT_NE(stateIcon("use.png"), stateIcon("notreach.png"));
    const struct
    {
        QList<int> codes;
        int stored;
        bool canBeTicked;
        const char* icon;
        const char* word; // told to who cannot see the icon
    } groups[] = {        // The names of these two icons are the wrong way round, and stay so.
                  {{2, 4, 9, 14}, 3, false, "notuse.png", "In Use"},
                  {{1, 8, 13, 18}, 1, true, "use.png", "Free"},
                  {{0, 3, 5, -1, 7, 10, 19, 255}, 2, false, "notreach.png", "Unreachable"}};
    find(freeCameras(1));
    QTreeWidgetItem* camera = item("S1");
    StructDeviceInfo device = camera->data(0, Qt::UserRole + 3).value<StructDeviceInfo>();
    for (const auto& group : groups)
        for (const int code : group.codes) {
            device.nStatus = code;
            camera->setData(0, Qt::UserRole + 3, QVariant::fromValue(device));
            window->onUpdateDevice(camera);
            EXPECT_EQ(statusCode(0), group.stored) << "code " << code;
            EXPECT_EQ(table().cellCheckEnable(0, Check), group.canBeTicked) << "code " << code;
            EXPECT_TRUE(icon(0) == stateIcon(group.icon)) << "code " << code;
            EXPECT_EQ(table().item(0, Status)->data(Qt::AccessibleTextRole), QVariant(group.word));
            EXPECT_EQ(text(0, Status), "") << "code " << code; // the icon alone
        }
}

TEST_F(DeviceTable, TheWordsOfTheStatusFollowTheLanguage)
{
    find({{"S1"}, {"S2", KX_AVAILABILITY_IN_USE}, {"S3", KX_AVAILABILITY_UNREACHABLE}});
    const auto words = [this] {
        QStringList list;
        for (int row = 0; row < 3; ++row)
            list << table().item(row, Status)->data(Qt::AccessibleTextRole).toString();
        return list;
    };
    speakChinese();
    EXPECT_EQ(words(), (QStringList{"空闲", "使用中", "不可达"}));
    speakEnglish();
    EXPECT_EQ(words(), (QStringList{"Free", "In Use", "Unreachable"}));
}

TEST_F(DeviceTable, ADeviceThatIsTakenLosesItsTick)
{
    find(freeCameras(2));
    tick("S1");
    ASSERT_TRUE(isTicked(0));
    find({{"S1", KX_AVAILABILITY_IN_USE}, {"S2"}});
    EXPECT_FALSE(isTicked(0));
    EXPECT_FALSE(probe->importButton->isEnabled());
    find(freeCameras(2));
    EXPECT_FALSE(isTicked(0)); // free again, but not ticked by itself
    tick("S2");
    find({{"S1"}, {"S2", KX_AVAILABILITY_UNREACHABLE}});
    EXPECT_FALSE(isTicked(1));
    tick("S2");
    EXPECT_FALSE(isTicked(1));
}

TEST_F(DeviceTable, AnUpdateRefillsTheRowAndItsInterface)
{
    find({{"S1"}, {"S2"}});
    find({{"S1"}, {"S2", KX_AVAILABILITY_IN_USE, KX_TRANSPORT_GIGE, "eth5", "New", "Name"}});
    EXPECT_EQ(identity(1), (QStringList{"", "New", "Name", "S2", "eth5", "00:11:22:33:44:55"}));
    EXPECT_EQ(statusCode(1), 3);
    EXPECT_EQ(identity(0).at(3), "S1");
    EXPECT_EQ(statusCode(0), 1);
}

TEST_F(DeviceTable, AnUpdateDoesNotDecideVisibilityAgain)
{
    find({{"S1"}, {"S2", 1, KX_TRANSPORT_GIGE, "eth1"}});
    select(interfaceOf("S1"));
    ASSERT_EQ(hiddenRows(), QList<int>{1});
    find({{"S1"}, {"S2", 1, KX_TRANSPORT_GIGE, "eth0"}}); // now inside the chosen interface
    EXPECT_EQ(hiddenRows(), QList<int>{1});
}

TEST_F(DeviceTable, UpdatesAndDeletesOfUnknownDevicesChangeNothing)
{
    find(freeCameras(1));
    tick("S1");
    QTreeWidgetItem stranger;
    StructDeviceInfo device;
    device.nDeviceID = 99;
    device.stDeviceInfo = entryOf({"Z"}).info;
    stranger.setData(0, Qt::UserRole + 3, QVariant::fromValue(device));
    const QPointer<QOperateThread> worker = probe->workerOf(99);
    window->onUpdateDevice(&stranger);
    window->onDeleteDevice(&stranger);
    EXPECT_EQ(filledRows(), 1);
    EXPECT_EQ(rowOf("Z"), -1);
    EXPECT_TRUE(worker); // without a row not even its worker goes
    EXPECT_TRUE(probe->workers.contains(99));
    EXPECT_TRUE(isTicked(0));
}

TEST_F(DeviceTable, TheWorkerGoesAtOnceWithItsDevice)
{
    find(freeCameras(2));
    const int id = idOf("S1");
    const QPointer<QOperateThread> worker = probe->workerOf(id);
    const QPointer<QOperateThread> other = probe->workerOf(idOf("S2"));
    window->onDeleteDevice(item("S1"));
    EXPECT_FALSE(worker); // no event loop has run since
    EXPECT_FALSE(probe->workers.contains(id));
    EXPECT_TRUE(other);
}

TEST_F(DeviceTable, TheSearchForARowEndsAtTheFirstPlaceholder)
{
    find(freeCameras(2));
    EXPECT_EQ(probe->findRow(idOf("S2")), 1);
    QTableWidgetItem* behind = new QTableWidgetItem;
    behind->setData(Qt::UserRole + 1, 55);
    table().setItem(5, Check, behind);
    EXPECT_EQ(probe->findRow(55), -1);
    EXPECT_EQ(probe->findRow(-1), -1);
}

TEST_F(DeviceTable, ADeviceAnnouncedTwiceHasTwoRowsAndTheFirstAnswers)
{
    find(freeCameras(1));
    window->onNewDevice(item("S1"));
    EXPECT_EQ(filledRows(), 2);
    EXPECT_EQ(probe->findRow(idOf("S1")), 0);
}

// Cameras of all kinds are plugged and pulled while rows are sorted and some of them hidden.
TEST_F(DeviceTable, CamerasThatComeAndGoWhileItIsSortedAndFilteredKeepToTheirRows)
{
    const Camera usb{"U1", KX_AVAILABILITY_FREE, KX_TRANSPORT_USB3, "USB 2-1"};
    const Camera link{"L1", KX_AVAILABILITY_FREE, KX_TRANSPORT_CAMERA_LINK, "serial"};
    const Camera first{"S1"};
    const Camera second{"S2"};
    find({first, second, usb, link});
    select(interfaceOf("S1"));
    tick("S2");
    QMetaObject::invokeMethod(window.get(), "onSortTableWidget", Q_ARG(int, Serial), Q_ARG(bool, false));
    const Camera usbToo{"U2", KX_AVAILABILITY_FREE, KX_TRANSPORT_USB3, "USB 2-2"};
    const Camera third{"S3"};
    for (const QVector<Camera>& now : {QVector<Camera>{first, second, usb, link, usbToo, third},
                                       QVector<Camera>{second, usbToo, third, first},
                                       QVector<Camera>{second, usbToo, third, first, usb, link}}) {
        find(now);
        find(now); // who is gone is gone after two searches
        EXPECT_EQ(filledRows(), now.size());
        for (const Camera& camera : now) {
            const int row = rowOf(camera.serial);
            ASSERT_GE(row, 0) << camera.serial.constData();
            EXPECT_EQ(text(row, Serial), QString(camera.serial));
            EXPECT_EQ(text(row, Interface), QString(camera.interfaceName));
            EXPECT_EQ(table().isRowHidden(row), camera.interfaceName != "eth0") << camera.serial.constData();
            EXPECT_EQ(isTicked(row), camera.serial == "S2") << camera.serial.constData();
            EXPECT_TRUE(probe->workerOf(idOf(camera.serial)));
        }
    }
}

TEST_F(DeviceTable, FillingStopsAtAMissingItem)
{
    find({{"S1", 1, KX_TRANSPORT_GIGE, "eth0", "Old"}});
    delete table().takeItem(0, User);
    find({{"S1", KX_AVAILABILITY_IN_USE, KX_TRANSPORT_GIGE, "eth0", "New"}});
    EXPECT_EQ(text(0, Model), "New");
    EXPECT_EQ(statusCode(0), 1); // not reached
}

TEST_F(DeviceTable, TheEncodingIsSetAgainByUpdatesButNotByNewDevices)
{
    setSetting("General/EncodingType", 3);
    tests::resetSuiteTools();
    tests::suiteScript().programDataPath = folder.filePath("data");
    find(freeCameras(2));
    EXPECT_EQ(tests::suiteCalls("SetEncodingType"), QStringList());
    find({{"S1", KX_AVAILABILITY_IN_USE}, {"S2"}});
    EXPECT_EQ(tests::suiteCalls("SetEncodingType"), QStringList("SetEncodingType(3)"));
    EXPECT_EQ(
        refill("S1", "").filter(QRegularExpression("^(SetEncodingType|GetEncode)")).mid(0, 2),
        (QStringList{"SetEncodingType(3)", "GetEncodeQStringFromUnChar(32)"})); // before the row is filled
    find({{"S1", 1, KX_TRANSPORT_GIGE, "eth0", "\xE9"}, {"S2"}});
    EXPECT_EQ(text(0, Model), QString(QChar(0xE9)));
}

TEST_F(DeviceTable, FillingNotifiesOfNoRow)
{
    find(freeCameras(2));
    tick("S1");
    tick("S2");
    ASSERT_EQ(headerState(), Qt::Checked);
    int notified = 0;
    QObject::connect(&table(), &ORBCustomTableWidget::SigCellCheckStateChanged, [&] { ++notified; });
    find({{"S1", KX_AVAILABILITY_IN_USE}, {"S2"}}); // loses its tick
    EXPECT_EQ(headerState(), Qt::Checked);
    find(freeCameras(3)); // S1 and the new one take the header's tick
    EXPECT_EQ(tickedRows(), (QList<int>{0, 1, 2}));
    EXPECT_EQ(notified, 0);
}

TEST_F(DeviceTable, TicksAreEvaluatedBeforeTheIconAndTheCodeAreSet)
{
    open(1);
    find(freeCameras(3));
    table().setCellCheckState(0, Check, Qt::Checked, false);
    table().setCellCheckState(1, Check, Qt::Checked, false); // one too many: evaluating tells of it
    int code = 0;
    bool isIconOld = false;
    whileMessageIsShown = [&](const ORBCustom::DialogRequest&) {
        code = statusCode(2);
        isIconOld = icon(2) == stateIcon("use.png");
    };
    find({{"S1"}, {"S2"}, {"S3", KX_AVAILABILITY_IN_USE}});
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(code, 1);
    EXPECT_TRUE(isIconOld);
    EXPECT_EQ(statusCode(2), 3);
    EXPECT_TRUE(icon(2) == stateIcon("notuse.png"));
}

TEST_F(DeviceTable, TheLastColumnThatTheFlagsLeaveStretches)
{
    setSetting(kMaskKey, 1 | 2);
    open();
    EXPECT_EQ(mode(Model), QHeaderView::Stretch);
    EXPECT_EQ(mode(PortId), QHeaderView::Interactive);
}
