// The device tree over a search that the test answers.
#include <DevListMgr/VELADeviceTree.h>

#include <QDeadlineTimer>
#include <QMutex>
#include <QSignalSpy>
#include <QtTest>

#include <atomic>
#include <cstring>

namespace
{

QMutex g_lock;
QVector<KX_DeviceEntry> g_entries;
QByteArray g_problems; // of searches
unsigned int g_mask = 0;
std::atomic<int> g_searches{0}; // begun
std::atomic<int> g_posted{0};   // of them, those whose findings are on their way
std::atomic<uint32_t> g_stamp{1};
std::atomic<QThread*> g_searchThread{nullptr};

QStringList g_messages; // but for those of Qt itself

void takeMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    QMutexLocker lock(&g_lock);
    g_messages << QString(type == QtWarningMsg ? "warning " : "other ") + text;
}

template <std::size_t Size>
void copyText(uint8_t (&field)[Size], const char* text)
{
    std::strncpy(reinterpret_cast<char*>(field), text, Size - 1);
}

KX_DeviceEntry gige(const char* serial, const char* interfaceName = "eth0",
                    unsigned int availability = KX_AVAILABILITY_FREE)
{
    KX_DeviceEntry entry;
    std::memset(&entry, 0, sizeof entry);
    entry.info.transportType = KX_TRANSPORT_GIGE;
    copyText(entry.info.special.gige.modelName, "Model");
    copyText(entry.info.special.gige.serialNumber, serial);
    entry.availability = availability;
    std::strcpy(entry.interfaceName, interfaceName);
    return entry;
}

KX_DeviceEntry usb(const char* serial)
{
    KX_DeviceEntry entry;
    std::memset(&entry, 0, sizeof entry);
    entry.info.transportType = KX_TRANSPORT_USB3;
    copyText(entry.info.special.usb3.modelName, "Usb");
    copyText(entry.info.special.usb3.serialNumber, serial);
    entry.availability = KX_AVAILABILITY_IN_USE;
    std::strcpy(entry.interfaceName, "USB");
    return entry;
}

StructDeviceInfo deviceOf(const QTreeWidgetItem* item)
{
    return item->data(0, Qt::UserRole + 3).value<StructDeviceInfo>();
}

int nodeType(const QTreeWidgetItem* item)
{
    return item->data(0, Qt::UserRole + 1).toInt();
}

// What was announced, read while it was announced.
struct Announcements
{
    explicit Announcements(VELADeviceTree& tree)
    {
        const auto note = [this](const char* what) {
            return [this, what](QTreeWidgetItem* item) {
                log << QString("%1 %2").arg(what).arg(deviceOf(item).nDeviceID);
                threads << QThread::currentThread();
                parentTexts << (item->parent() ? item->parent()->text(0) : QString());
            };
        };
        QObject::connect(&tree, &VELADeviceTree::sigNewDeviceItem, note("new"));
        QObject::connect(&tree, &VELADeviceTree::sigUpdateDeviceItem, note("update"));
        QObject::connect(&tree, &VELADeviceTree::sigDeleteDeviceItem, note("delete"));
    }

    QStringList log, parentTexts;
    QList<QThread*> threads;
};

} // namespace

KX_Status KX_CC_EnumDevices(uint32_t mask, KX_DeviceEntry* entries, uint32_t capacity, uint32_t* count)
{
    QMutexLocker lock(&g_lock);
    g_mask = mask;
    g_searchThread = QThread::currentThread();
    ++g_searches;
    *count = uint32_t(g_entries.size());
    for (int i = 0; i < g_entries.size() && uint32_t(i) < capacity; ++i)
        entries[i] = g_entries[i];
    return KX_OK;
}

KX_Status KX_CC_GetSearchProblems(char* text, uint32_t capacity, uint32_t* length)
{
    QMutexLocker lock(&g_lock);
    *length = uint32_t(g_problems.size());
    if (capacity <= *length)
        return KX_E_BUFFER_TOO_SMALL;
    std::memcpy(text, g_problems.constData(), *length + 1);
    return KX_OK;
}

uint32_t KX_CC_GetInterfaceStamp(void)
{
    g_posted = g_searches.load(); // the search thread asks between its searches
    return g_stamp;
}

class DeviceTreeTest : public QObject
{
    Q_OBJECT

    // Lets the next search see these cameras, at once.
    void show(const QVector<KX_DeviceEntry>& entries)
    {
        QMutexLocker lock(&g_lock);
        g_entries = entries;
        ++g_stamp;
    }

    // Until what one more search has found is posted; the event loop stands still meanwhile.
    static bool waitForScan(int searchesBefore)
    {
        const QDeadlineTimer limit(10000);
        while (g_posted <= searchesBefore && !limit.hasExpired())
            QThread::msleep(1);
        return g_posted > searchesBefore;
    }

    // One more search ends in that.
    static bool searchWith(const char* problems)
    {
        QMutexLocker lock(&g_lock);
        g_problems = problems;
        const int before = g_searches;
        ++g_stamp;
        lock.unlock();
        return waitForScan(before);
    }

    static bool takeScan(int searchesBefore)
    {
        const bool isPosted = waitForScan(searchesBefore);
        QCoreApplication::processEvents();
        return isPosted;
    }

private slots:
    void init() { show({}); }

    void announcesFromTheEventLoopOnTheWidgetsThread()
    {
        show({gige("1")});
        VELADeviceTree tree;
        Announcements seen(tree);
        const int before = g_searches;
        tree.setVisibleItemTypes({3, 4, 1, 5, 14, 13});
        tree.updateDeviceTypes(5, true);
        // The event loop stands still until the search is over: nothing may have been announced inside the
        // calls.
        QVERIFY(waitForScan(before));
        QCOMPARE(seen.log, QStringList());
        QTRY_COMPARE(seen.log, QStringList{"new 1"});
        QCOMPARE(seen.threads, QList<QThread*>{QThread::currentThread()});
        QVERIFY(g_searchThread != QThread::currentThread());
        QCOMPARE(g_mask, 13u); // GigE and USB3 were asked for; Camera Link is always looked for
    }

    void scansThatComeWhileADialogIsOpenWait()
    {
        show({gige("1"), gige("2")});
        VELADeviceTree tree;
        tree.updateDeviceTypes(5, true);
        QTRY_VERIFY(tree.findCameraItem(1) && tree.findCameraItem(2));
        bool wasOpen = false;
        QStringList log;
        connect(&tree, &VELADeviceTree::sigDeleteDeviceItem, [&](QTreeWidgetItem* item) {
            log << QString("delete %1").arg(deviceOf(item).nDeviceID);
            if (wasOpen)
                return;
            wasOpen = true;
            // As a modal dialog: the event loop runs while more scans come.
            for (int scan = 0; scan < 3; ++scan) {
                const int before = g_searches;
                ++g_stamp;
                QVERIFY(takeScan(before));
            }
            log << "closed";
        });
        connect(&tree, &VELADeviceTree::sigNewDeviceItem,
                [&](QTreeWidgetItem* item) { log << QString("new %1").arg(deviceOf(item).nDeviceID); });
        show({});
        QTRY_COMPARE_WITH_TIMEOUT(log, (QStringList{"delete 1", "closed", "delete 2"}), 15000);
        show({gige("1"), gige("2")});
        QTRY_COMPARE(log.mid(3), (QStringList{"new 1", "new 2"}));
        QVERIFY(tree.findCameraItem(1) && tree.findCameraItem(2));
    }

    void whatStandsInTheWayOfASearchIsLoggedOnceAsLongAsItDoes()
    {
        g_messages.clear();
        QtMessageHandler before = qInstallMessageHandler(takeMessage);
        VELADeviceTree tree;
        tree.updateDeviceTypes(5, true);
        for (const char* problems : {"", "The producer a crashed.", "The producer a crashed.",
                                     "The producer a crashed.\nThe library b hung.", "The library b hung.",
                                     "", "The library b hung."})
            QVERIFY(searchWith(problems));
        qInstallMessageHandler(before);
        QMutexLocker lock(&g_lock);
        QCOMPARE(g_messages, (QStringList{"warning The producer a crashed.", "warning The library b hung.",
                                          "warning The library b hung."}));
    }

    void groupsByTransportAndInterface()
    {
        show({gige("1", "eth0"), gige("2", "eth1"), usb("3")});
        VELADeviceTree tree;
        Announcements seen(tree);
        tree.updateDeviceTypes(5, true);
        QTRY_COMPARE(seen.log, (QStringList{"new 1", "new 2", "new 3"}));
        QCOMPARE(seen.parentTexts, (QStringList{"eth0", "eth1", "USB"}));
        QTreeWidgetItem* all = tree.findItem(14, -1);
        QVERIFY(all);
        QCOMPARE(nodeType(all), 14);
        QCOMPARE(tree.topLevelItemCount(), 1);
        QCOMPARE(all->childCount(), 2);
        QCOMPARE(all->child(0)->text(0), QString("GigE Vision"));
        QCOMPARE(nodeType(all->child(0)), 13);
        QCOMPARE(nodeType(all->child(0)->child(0)), 1);
        QCOMPARE(nodeType(all->child(1)->child(0)), 3);
        const QTreeWidgetItem* camera = tree.findCameraItem(3);
        QVERIFY(camera);
        QCOMPARE(nodeType(camera), 5);
        QCOMPARE(camera->text(0), QString("Usb (3)"));
        QCOMPARE(deviceOf(camera).nStatus, 2);
        QCOMPARE(deviceOf(camera).stDeviceInfo.transportType, 4u);
        QVERIFY(!camera->icon(0).isNull());
        QCOMPARE(tree.findItem(5, 3), camera);
        QVERIFY(!tree.findItem(14, 3));
        QVERIFY(!tree.findCameraItem(4));
    }

    // Tips are read as markup where they look like it.
    void tipsShowWhatCamerasAreCalled()
    {
        show({gige("<b>1</b>"), gige("2 & 3")});
        VELADeviceTree tree;
        Announcements seen(tree);
        tree.updateDeviceTypes(5, true);
        QTRY_COMPARE(seen.log, (QStringList{"new 1", "new 2"}));
        const QTreeWidgetItem* plain = tree.findCameraItem(2);
        QVERIFY(plain->text(0).contains("2 & 3"));
        QCOMPARE(plain->toolTip(0), plain->text(0));
        const QTreeWidgetItem* camera = tree.findCameraItem(1);
        QVERIFY(camera->text(0).contains("<b>1</b>"));
        QVERIFY(!camera->toolTip(0).contains("<b>"));
        QVERIFY(camera->toolTip(0).contains("&lt;b&gt;1&lt;/b&gt;"));
    }

    void hiddenGroupsMoveTheirCamerasUp()
    {
        show({gige("1")});
        VELADeviceTree tree;
        Announcements seen(tree);
        tree.setVisibleItemTypes({14, 5});
        tree.updateDeviceTypes(1, true);
        QTRY_COMPARE(seen.log, QStringList{"new 1"});
        QCOMPARE(tree.findCameraItem(1)->parent(), tree.findItem(14, -1));
    }

    void aChangeIsAnnouncedOnce()
    {
        show({gige("1")});
        VELADeviceTree tree;
        Announcements seen(tree);
        tree.updateDeviceTypes(5, true);
        QTRY_COMPARE(seen.log, QStringList{"new 1"});
        show({gige("1", "eth0", KX_AVAILABILITY_IN_USE)});
        QTRY_COMPARE(seen.log, (QStringList{"new 1", "update 1"}));
        QCOMPARE(deviceOf(tree.findCameraItem(1)).nStatus, 2);
        const int searches = g_searches;
        ++g_stamp;
        QVERIFY(takeScan(searches));
        QCOMPARE(seen.log.size(), 2);
    }

    void aCameraThatMovesToAnotherInterfaceIsAnUpdate()
    {
        show({gige("1", "eth0")});
        VELADeviceTree tree;
        Announcements seen(tree);
        tree.updateDeviceTypes(5, true);
        QTRY_COMPARE(seen.log, QStringList{"new 1"});
        show({gige("1", "eth1")});
        QTRY_COMPARE(seen.log, (QStringList{"new 1", "update 1"}));
        QCOMPARE(seen.parentTexts, (QStringList{"eth0", "eth1"}));
        QCOMPARE(tree.findItem(14, -1)->child(0)->childCount(), 1); // the empty group is gone
    }

    void goneAfterTwoSearchesAndBackUnderTheSameId()
    {
        show({gige("1"), gige("2")});
        VELADeviceTree tree;
        Announcements seen(tree);
        tree.updateDeviceTypes(5, true);
        QTRY_COMPARE(seen.log, (QStringList{"new 1", "new 2"}));

        const int searches = g_searches;
        show({gige("2")});
        QVERIFY(takeScan(searches));
        QCOMPARE(seen.log.size(), 2); // one lost answer
        ++g_stamp;
        QTRY_COMPARE(seen.log, (QStringList{"new 1", "new 2", "delete 1"}));
        QVERIFY(!tree.findCameraItem(1));

        show({gige("3"), gige("1"), gige("2")});
        QTRY_COMPARE(seen.log.mid(3), (QStringList{"new 3", "new 1"}));
    }

    void sameSerialNumberTwiceMakesTwoCameras()
    {
        show({gige("1"), gige("1")});
        VELADeviceTree tree;
        Announcements seen(tree);
        tree.updateDeviceTypes(5, true);
        QTRY_COMPARE(seen.log, (QStringList{"new 1", "new 2"}));
    }

    void switchedOffEverythingGoesAtOnce()
    {
        show({gige("1")});
        VELADeviceTree tree;
        Announcements seen(tree);
        tree.updateDeviceTypes(5, true);
        QTRY_COMPARE(seen.log, QStringList{"new 1"});
        tree.updateDeviceTypes(5, false);
        QTRY_COMPARE(seen.log, (QStringList{"new 1", "delete 1"}));
        QCOMPARE(tree.findItem(14, -1)->childCount(), 0);
    }

    void moreCamerasThanOneCallHolds()
    {
        QVector<KX_DeviceEntry> many;
        for (int i = 0; i < 70; ++i)
            many << gige(QByteArray::number(i).constData());
        show(many);
        VELADeviceTree tree;
        Announcements seen(tree);
        tree.updateDeviceTypes(5, true);
        QTRY_COMPARE(seen.log.size(), 70);
        QVERIFY(tree.findCameraItem(70));
    }

    void withoutAChangeItSearchesEveryTwoSeconds()
    {
        VELADeviceTree tree;
        const int before = g_searches;
        QElapsedTimer timer;
        timer.start();
        tree.updateDeviceTypes(5, true);
        QTRY_COMPARE_WITH_TIMEOUT(g_searches.load(), before + 2, 10000);
        QVERIFY2(timer.elapsed() >= 1900, "the second search came too early");
    }
};

QTEST_MAIN(DeviceTreeTest)
#include "device_tree_test.moc"
