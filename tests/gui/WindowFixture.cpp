#include "WindowFixture.h"

#include "window/TaskbarProgress.h"

#include <SuiteTools/SuiteToolsWidgets.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QResource>
#include <QStyleFactory>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

// The tree's own search waits here while a window lives: what it finds is given to it by find() instead.
std::unique_ptr<tests::Gate> g_search;

QStringList* g_taskbar = nullptr; // of the fixture that lives

template <std::size_t Size>
void fillField(uint8_t (&field)[Size], const QByteArray& text)
{
    std::memset(field, 0, Size);
    std::memcpy(field, text.constData(), std::min(std::size_t(text.size()), Size));
}

StructDeviceInfo deviceOf(const QTreeWidgetItem* item)
{
    return item->data(0, Qt::UserRole + 3).value<StructDeviceInfo>();
}

QByteArray serialOf(const KX_DeviceInfo& info)
{
    const uint8_t* field = info.transportType == KX_TRANSPORT_GIGE   ? info.special.gige.serialNumber
                           : info.transportType == KX_TRANSPORT_USB3 ? info.special.usb3.serialNumber
                                                                     : info.special.cameraLink.serialNumber;
    return QByteArray(reinterpret_cast<const char*>(field));
}

} // namespace

// These two stand in the place of the window's own.
void ShowTaskbarProgress(QWidget*, int done, int all, bool failed)
{
    if (g_taskbar)
        *g_taskbar << QString("%1/%2%3").arg(done).arg(all).arg(failed ? " failed" : "");
}

void EndTaskbarProgress(QWidget*)
{
    if (g_taskbar)
        *g_taskbar << "end";
}

extern "C" uint32_t KX_CC_GetInterfaceStamp(void)
{
    return 1;
}

extern "C" KX_Status KX_CC_GetSearchProblems(char*, uint32_t, uint32_t* length)
{
    *length = 0;
    return KX_OK;
}

KX_DeviceEntry entryOf(const Camera& camera)
{
    KX_DeviceEntry entry;
    std::memset(&entry, 0, sizeof entry);
    entry.info.transportType = camera.transport;
    entry.availability = camera.availability;
    std::strncpy(entry.interfaceName, camera.interfaceName.constData(), sizeof entry.interfaceName - 1);
    auto& special = entry.info.special;
    if (camera.transport == KX_TRANSPORT_USB3) {
        fillField(special.usb3.modelName, camera.model);
        fillField(special.usb3.serialNumber, camera.serial);
        fillField(special.usb3.userDefinedName, camera.user);
    } else if (camera.transport == KX_TRANSPORT_GIGE) {
        fillField(special.gige.modelName, camera.model);
        fillField(special.gige.serialNumber, camera.serial);
        fillField(special.gige.userDefinedName, camera.user);
        special.gige.macHigh = camera.macHigh;
        special.gige.macLow = camera.macLow;
    } else {
        fillField(special.cameraLink.portId, camera.portId);
        fillField(special.cameraLink.modelName, camera.model);
        fillField(special.cameraLink.serialNumber, camera.serial);
    }
    return entry;
}

QVector<Camera> freeCameras(int count)
{
    QVector<Camera> cameras;
    for (int i = 1; i <= count; ++i)
        cameras << Camera{"S" + QByteArray::number(i)};
    return cameras;
}

WindowFixture::WindowFixture()
{
    g_taskbar = &taskbar;
    tests::resetScriptedCamera();
    tests::resetSuiteTools();
    tests::Recorder::instance().clear();
    QDir(folder.path()).mkpath("data");
    QDir(folder.path()).mkpath("user");
    tests::suiteScript().programDataPath = folder.filePath("data");
    qputenv("VELA_USER_DATA", QFile::encodeName(folder.filePath("user")));
    qputenv("VELA_LANGUAGE", "ENG");
    ORBCustom::setDialogHook([this](const ORBCustom::DialogRequest& request) {
        ORBCustom::DialogAnswer answer;
        answer.answered = true;
        answer.result = 1;
        if (request.kind == ORBCustom::DialogRequest::ExistingDirectory) {
            folderQuestions << PathQuestion{request.parent, request.title, request.text, {}};
            answer.path = folderAnswer;
        } else {
            messages << request;
            if (whileMessageIsShown)
                whileMessageIsShown(request);
        }
        return answer;
    });
    VELAInterface::setOpenFileHook(
        [this](QWidget* parent, const QString& caption, const QString& start, const QString& filter) {
            fileQuestions << PathQuestion{parent, caption, start, filter};
            if (whileFileDialogIsOpen)
                whileFileDialogIsOpen();
            return fileAnswer;
        });
}

WindowFixture::~WindowFixture()
{
    closeWindow();
    g_taskbar = nullptr;
    speakEnglish();
    VELAInterface::setOpenFileHook({});
    ORBCustom::setDialogHook({});
    EXPECT_EQ(tests::cameraViolations(), QStringList());
}

void WindowFixture::open(unsigned int limit)
{
    closeWindow();
    g_search = std::make_unique<tests::Gate>();
    tests::setDeviceSearch([] {
        g_search->pass();
        return std::vector<KX_DeviceEntry>();
    });
    tests::suiteScript().toolsSupportNum = limit;
    window = std::make_unique<MainWidget>();
    probe = std::make_unique<MainWidgetProbe>(*window);
}

void WindowFixture::closeWindow()
{
    if (!window)
        return;
    for (QOperateThread* worker : qAsConst(probe->workers))
        worker->wait();
    destroyWindow();
}

void WindowFixture::destroyWindow()
{
    g_search->open();
    window.reset();
    probe.reset();
}

QThread* WindowFixture::scanner() const
{
    for (QThread* thread : probe->tree->findChildren<QThread*>())
        return thread;
    ADD_FAILURE() << "the tree has no search";
    return nullptr;
}

void WindowFixture::find(const QVector<Camera>& cameras)
{
    using DeviceEntries = std::vector<KX_DeviceEntry>;
    DeviceEntries entries;
    for (const Camera& camera : cameras)
        entries.push_back(entryOf(camera));
    for (int search = 0; search < 2; ++search) // one that misses a camera does not make it go
        QMetaObject::invokeMethod(scanner(), "scanned", Qt::DirectConnection, Q_ARG(DeviceEntries, entries));
    QCoreApplication::sendPostedEvents(probe->tree, QEvent::MetaCall);
}

QTreeWidgetItem* WindowFixture::item(const QByteArray& serial) const
{
    for (QTreeWidgetItemIterator it(probe->tree); *it; ++it)
        if ((*it)->data(0, Qt::UserRole + 1) == VELADeviceTree::NodeCamera &&
            serialOf(deviceOf(*it).stDeviceInfo) == serial)
            return *it;
    return nullptr;
}

int WindowFixture::idOf(const QByteArray& serial) const
{
    const QTreeWidgetItem* camera = item(serial);
    return camera ? deviceOf(camera).nDeviceID : -1;
}

int WindowFixture::rowOf(const QByteArray& serial) const
{
    for (int row = 0; row < table().rowCount(); ++row)
        if (table().item(row, Serial) && table().item(row, Serial)->text() == serial)
            return row;
    return -1;
}

void WindowFixture::select(QTreeWidgetItem* node)
{
    probe->tree->setCurrentItem(node);
}

void WindowFixture::tick(int row)
{
    if (!window->isVisible()) {
        window->show();
        handleEvents();
    }
    const QRect cell = table().visualItemRect(table().item(row, Check));
    QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, cell.center());
}

void WindowFixture::clickHeaderBox()
{
    if (!window->isVisible()) {
        window->show();
        handleEvents();
    }
    QTest::mouseClick(probe->header().viewport(), Qt::LeftButton, {}, {19, 16});
}

QList<int> WindowFixture::tickedRows() const
{
    QList<int> rows;
    for (int row = 0; row < table().rowCount(); ++row)
        if (isTicked(row))
            rows << row;
    return rows;
}

QList<int> WindowFixture::hiddenColumns() const
{
    QList<int> columns;
    for (int column = 0; column < table().columnCount(); ++column)
        if (table().isColumnHidden(column))
            columns << column;
    return columns;
}

QList<int> WindowFixture::hiddenRows() const
{
    QList<int> rows;
    for (int row = 0; row < table().rowCount(); ++row)
        if (table().isRowHidden(row))
            rows << row;
    return rows;
}

Qt::CheckState WindowFixture::headerState() const
{
    return probe->header().checkState(Check);
}

QString WindowFixture::text(int row, int column) const
{
    const QTableWidgetItem* cell = table().item(row, column);
    return cell ? cell->text() : QString("no item");
}

QString WindowFixture::tip(const QByteArray& serial) const
{
    return table().detailTip(rowOf(serial), Operation);
}

void WindowFixture::setSetting(const QString& key, const QVariant& value)
{
    QSettings(configFile(), QSettings::IniFormat).setValue(key, value);
}

QVariant WindowFixture::setting(const QString& key) const
{
    return QSettings(configFile(), QSettings::IniFormat).value(key);
}

void WindowFixture::speakChinese()
{
    ASSERT_TRUE(m_translator.load(QStringLiteral(IE_WINDOW_TRANSLATION)));
    QCoreApplication::installTranslator(&m_translator);
    handleEvents();
}

void WindowFixture::speakEnglish()
{
    if (QCoreApplication::removeTranslator(&m_translator))
        handleEvents();
}

bool WindowFixture::waitFor(const std::function<bool()>& isDone)
{
    QElapsedTimer timer;
    timer.start();
    while (!isDone() && timer.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    return isDone();
}

void WindowFixture::handleEvents()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

// Another program of the suite at work on the settings file: one key after the other.
static int writeSettings(const QString& file, int keys)
{
    std::puts("begins");
    std::fflush(stdout);
    for (int i = 1; i <= keys; ++i) {
        QSettings(file, QSettings::IniFormat).setValue(QString("Other/Key%1").arg(i), i);
        QThread::msleep(5); // leaves the file to the window for a moment
    }
    return 0;
}

int main(int argc, char** argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--write-settings") == 0)
        return writeSettings(QFile::decodeName(argv[2]), std::atoi(argv[3]));
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    for (const char* file : {IE_WINDOW_RESOURCES "/vela.rcc", IE_WINDOW_RESOURCES "/ToolBarBtn.rcc"})
        if (!QResource::registerResource(QString(file)))
            qFatal("%s is missing", file);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
