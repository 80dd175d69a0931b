// The window for a long time: cameras come and go every second, and one batch runs after the other.
// SOAK_SECONDS says how long; less than a minute without.
#include "MainWidgetProbe.h"

#include "startup/Startup.h"
#include "window/Translations.h"

#include "camera_emulator/EmulatedCamera.h"
#include "support/ComingAndGoing.h"
#include "support/FileBytes.h"
#include "support/Flatness.h"
#include "support/LoopbackAddress.h"

#include <StyledCtl/DialogHooks.h>
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <list>

using std::chrono::milliseconds;

namespace
{

constexpr int kCameras = 8;
constexpr int kStaying = 3; // the first ones
constexpr int kShortSeconds = 40;
constexpr int kWarmUpSeconds = 12;
constexpr int kSerial = 4; // column

class WindowSoak : public ::testing::Test
{
protected:
    WindowSoak()
    {
        qputenv("VELA_PROGRAM_DATA", QFile::encodeName(m_folder.filePath("shared")));
        qputenv("VELA_USER_DATA", QFile::encodeName(m_folder.filePath("user")));
        qputenv("KX_DESCRIPTION_CACHE", QFile::encodeName(m_folder.filePath("descriptions")));
        for (const char* name : {"shared", "user", "features"})
            QDir().mkpath(m_folder.filePath(name));
        plugIn();
        // Files are chosen by nobody; every other dialog is there and is closed as a person does it.
        ORBCustom::setDialogHook([this](const ORBCustom::DialogRequest& request) {
            ORBCustom::DialogAnswer answer;
            answer.answered = request.kind == ORBCustom::DialogRequest::ExistingDirectory;
            answer.path = m_folder.filePath("features");
            return answer;
        });
        VELAInterface::setOpenFileHook(
            [this](QWidget*, const QString&, const QString&, const QString&) { return fileOf(0); });
        QObject::connect(&m_closing, &QTimer::timeout, [this] { closeDialog(); });
        m_closing.start(20);
        Startup::configureLog();
        EXPECT_TRUE(LoadTranslations("ENG"));
        m_window = std::make_unique<MainWidget>();
        m_window->show();
        m_probe = std::make_unique<MainWidgetProbe>(*m_window);
        EXPECT_TRUE(QTest::qWaitFor([this] { return listed() == kCameras; }, 20000));
    }

    ~WindowSoak() override
    {
        m_guests.reset();
        m_window.reset();
        VELAInterface::setOpenFileHook({});
        ORBCustom::setDialogHook({});
    }

    void plugIn()
    {
        QByteArrayList addresses;
        std::vector<emu::EmulatedCamera*> guests;
        for (int i = 0; i < kCameras; ++i) {
            emu::CameraConfig config;
            config.address = tests::freshLoopbackAddress();
            config.serial = "S" + std::to_string(i + 1);
            emu::EmulatedCamera& camera = m_cameras.emplace_back(config);
            EXPECT_TRUE(camera.start());
            addresses += QByteArray::fromStdString(config.address);
            if (i >= kStaying)
                guests.push_back(&camera);
        }
        qputenv("KX_CAMERA_ADDRESSES", addresses.join(','));
        m_guests = std::make_unique<tests::ComingAndGoing>(guests, [] { return milliseconds(1000); });
        m_guests->holdAll();
    }

    QString fileOf(int camera) const
    {
        return m_folder.filePath(QString("features/EMU-1_S%1.fpk").arg(camera + 1));
    }

    void closeDialog()
    {
        QWidget* open = QApplication::activeModalWidget();
        if (!qobject_cast<ORBCustomMessageBox*>(open) && !qobject_cast<ORBCustomSaveDoneHintDlg*>(open))
            return;
        ++m_dialogs;
        QTest::keyClick(open, Qt::Key_Escape);
    }

    int listed() const
    {
        int count = 0;
        for (int row = 0; row < m_probe->table->rowCount(); ++row)
            count +=
                m_probe->table->item(row, kSerial) && !m_probe->table->item(row, kSerial)->text().isEmpty()
                    ? 1
                    : 0;
        return count;
    }

    int tickAll()
    {
        ORBCustomTableWidget& table = *m_probe->table;
        int ticked = 0;
        for (int row = 0; row < listed(); ++row) {
            if (table.cellCheckState(row, 0) != Qt::Checked)
                QTest::mouseClick(table.viewport(), Qt::LeftButton, {},
                                  table.visualRect(table.model()->index(row, 0)).center());
            ticked += table.cellCheckState(row, 0) == Qt::Checked ? 1 : 0;
        }
        return ticked;
    }

    // Comes back when all jobs are over and the dialogs are closed. A batch ends when none of those that have
    // begun goes on any more, others may begin behind it.
    void run(QPushButton& button)
    {
        const int ticked = tickAll();
        ASSERT_TRUE(button.isEnabled());
        QTest::mouseClick(&button, Qt::LeftButton);
        const auto isOver = [this, ticked] {
            return m_probe->succeeded + m_probe->failed == ticked && m_window->isEnabled() &&
                   !QApplication::activeModalWidget();
        };
        EXPECT_TRUE(QTest::qWaitFor(isOver, 20000)) << m_probe->counts().join(' ').toStdString();
        EXPECT_GE(m_probe->succeeded, kStaying);
        ++m_batches;
        QTest::mouseClick(m_probe->backButton, Qt::LeftButton);
    }

    void expectTheFirstFiles()
    {
        for (int i = 0; i < kStaying; ++i) {
            if (m_first.size() == i)
                m_first.append(tests::bytesOf(fileOf(i)));
            EXPECT_TRUE(m_first[i].size() > 0 && tests::bytesOf(fileOf(i)) == m_first[i]) << i;
        }
    }

    // With all cameras there, and no job under way.
    void look(tests::Flatness& figures, bool isWarm)
    {
        m_guests->holdAll();
        EXPECT_TRUE(QTest::qWaitFor([this] { return listed() == kCameras; }, 20000));
        run(*m_probe->exportButton);
        const int objects = m_window->findChildren<QObject*>().size();
        const int widgets = QApplication::allWidgets().size();
        if (isWarm) {
            figures.expectFlat(size_t(m_batches));
            EXPECT_LE(objects, m_objects);
            EXPECT_LE(widgets, m_widgets);
        } else {
            figures.warmUp(size_t(m_batches));
            m_objects = std::max(m_objects, objects);
            m_widgets = std::max(m_widgets, widgets);
        }
        m_guests->letGo();
    }

    QTemporaryDir m_folder;
    std::list<emu::EmulatedCamera> m_cameras;
    std::unique_ptr<tests::ComingAndGoing> m_guests;
    std::unique_ptr<MainWidget> m_window;
    std::unique_ptr<MainWidgetProbe> m_probe;
    QTimer m_closing;
    QByteArrayList m_first;
    int m_dialogs = 0;
    int m_batches = 0;
    int m_objects = 0;
    int m_widgets = 0;
};

} // namespace

TEST_F(WindowSoak, StaysAsItIs)
{
    const int seconds = qMax(qEnvironmentVariableIntValue("SOAK_SECONDS"), kShortSeconds);
    tests::Flatness figures(6 * 1024, 1024, milliseconds(2200));
    QElapsedTimer clock;
    clock.start();
    m_guests->letGo();
    int nextLook = kWarmUpSeconds / 2;
    while (clock.elapsed() < seconds * 1000 && !HasFailure()) {
        run(*m_probe->exportButton);
        expectTheFirstFiles();
        run(*m_probe->importButton);
        QTest::qWait(50);
        if (clock.elapsed() < nextLook * 1000)
            continue;
        look(figures, clock.elapsed() > kWarmUpSeconds * 1000);
        nextLook = int(clock.elapsed() / 1000) + (seconds > 10 * kShortSeconds ? 60 : 6);
    }
    look(figures, true);
    std::printf("%d batches, %d dialogs, %u times a camera came or went\n", m_batches, m_dialogs,
                m_guests->moves());
    EXPECT_GT(m_guests->moves(), unsigned(kShortSeconds) / 4);
    EXPECT_GT(m_dialogs, 0);
}

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    Startup::registerResources();
    Startup::addFonts();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
