// A person at the window, with cameras on the line: what is clicked, typed and seen, in both languages. Runs
// on a real display where there is one; IE_SCREENSHOTS names a folder for pictures of what was seen.
#include "startup/Startup.h"
#include "window/MainWidget.h"
#include "window/Translations.h"

#include "camera_emulator/EmulatedCamera.h"
#include "support/LoopbackAddress.h"

#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomMessageBox.h>
#include <StyledCtl/ORBCustomSaveDoneHintDlg.h>
#include <StyledCtl/ORBCustomTableWidget.h>

#include <QApplication>
#include <QCheckBox>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <functional>
#include <memory>
#include <vector>

class PersonTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void seesTheCameras();
    void exportsThree();
    void importsWithOneFailing();
    void seesACameraLeaveAndComeBack();
    void choosesColumns();
    void readsItInChinese();

private:
    using Condition = std::function<bool()>;

    // Does `action` as soon as `condition` holds, also while a modal dialog keeps the caller. What does not
    // come within ten seconds fails the test by its name, and dialogs that are open are closed, so that the
    // caller goes on.
    void asSoonAs(const QString& what, Condition condition, std::function<void()> action);
    static void closeDialogs();
    void answerFileDialog(const QString& path);
    template <typename Dialog>
    void whenShown(std::function<void(Dialog*)> action);
    void picture(const QString& name, QWidget* of = nullptr);
    QPushButton* button(const char* name) { return m_window->findChild<QPushButton*>(name); }
    void click(QWidget* widget) { QTest::mouseClick(widget, Qt::LeftButton); }
    int rowOf(const QString& serial) const;
    bool isListed(const QString& serial) const { return rowOf(serial) >= 0; }
    void tick(const QString& serial);
    Qt::CheckState ticked(const QString& serial) const { return m_table->cellCheckState(rowOf(serial), 0); }
    QString operationStatus(const QString& serial) const { return m_table->item(rowOf(serial), 8)->text(); }
    QStringList counters() const; // texts of the labels in the bar, left to right
    void back();
    QString exported(const QString& serial);

    QTemporaryDir m_folder;
    std::vector<std::unique_ptr<emu::EmulatedCamera>> m_cameras;
    std::unique_ptr<MainWidget> m_window;
    ORBCustomTableWidget* m_table = nullptr;
};

void PersonTest::asSoonAs(const QString& what, Condition condition, std::function<void()> action)
{
    auto* timer = new QTimer(this);
    const QDeadlineTimer limit(10000);
    connect(timer, &QTimer::timeout, this, [timer, what, condition, action, limit] {
        const bool isSo = condition();
        if (!isSo && !limit.hasExpired())
            return;
        timer->stop();
        timer->deleteLater();
        if (isSo)
            return action();
        QTest::qFail(qPrintable(what + " did not come"), __FILE__, __LINE__);
        closeDialogs();
    });
    timer->start(20);
}

void PersonTest::closeDialogs()
{
    while (QWidget* open = QApplication::activeModalWidget()) {
        open->close();
        if (open == QApplication::activeModalWidget())
            return; // it does not let itself be closed
    }
}

template <typename Dialog>
void PersonTest::whenShown(std::function<void(Dialog*)> action)
{
    const auto shown = [] { return qobject_cast<Dialog*>(QApplication::activeModalWidget()); };
    asSoonAs(
        Dialog::staticMetaObject.className(), [shown] { return shown() != nullptr; },
        [this, shown, action] {
            Dialog* dialog = shown();
            QTest::qWait(0);
            action(dialog);
        });
}

void PersonTest::answerFileDialog(const QString& path)
{
    whenShown<QFileDialog>([this, path](QFileDialog* dialog) {
        picture("file-dialog", dialog);
        auto* name = dialog->findChild<QLineEdit*>();
        QVERIFY(name);
        name->setText(QString());
        QTest::keyClicks(name, path);
        QTest::keyClick(name, Qt::Key_Return);
    });
}

void PersonTest::picture(const QString& name, QWidget* of)
{
    const QString folder = qEnvironmentVariable("IE_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    QTest::qWait(150); // what has just changed is painted
    QWidget* widget = of ? of : m_window.get();
    const QRect frame = widget->frameGeometry();
    const QPixmap seen =
        QGuiApplication::platformName() == "xcb"
            ? widget->screen()->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height())
            : widget->grab();
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(seen.save(QDir(folder).filePath(name + ".png")));
}

int PersonTest::rowOf(const QString& serial) const
{
    for (int row = 0; row < m_table->rowCount(); ++row)
        if (m_table->item(row, 4) && m_table->item(row, 4)->text() == serial)
            return row;
    return -1;
}

void PersonTest::tick(const QString& serial)
{
    const QModelIndex cell = m_table->model()->index(rowOf(serial), 0);
    QTest::mouseClick(m_table->viewport(), Qt::LeftButton, {}, m_table->visualRect(cell).center());
}

QStringList PersonTest::counters() const
{
    QStringList texts;
    QList<ORBCustomLabel*> labels = m_window->findChildren<ORBCustomLabel*>();
    std::sort(labels.begin(), labels.end(), [this](const QWidget* a, const QWidget* b) {
        return a->mapTo(m_window.get(), QPoint()).x() < b->mapTo(m_window.get(), QPoint()).x();
    });
    for (const ORBCustomLabel* label : qAsConst(labels))
        if (label->isVisibleTo(m_window.get()) && !label->text().isEmpty())
            texts.append(label->text());
    return texts;
}

void PersonTest::back()
{
    QTRY_VERIFY(m_window->isEnabled());
    click(button("BackBtn"));
    QVERIFY(button("ExportBtn")->isVisible());
}

void PersonTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    // A system's own dialog for files is not to be clicked by a test.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    qputenv("VELA_PROGRAM_DATA", m_folder.filePath("shared").toLocal8Bit());
    qputenv("VELA_USER_DATA", m_folder.filePath("user").toLocal8Bit());
    QDir().mkpath(m_folder.filePath("shared"));
    QDir().mkpath(m_folder.filePath("user"));
    const QStringList models = {"Gate camera", "Gate camera", "Gate camera", "Belt camera"};
    QStringList addresses;
    for (int i = 0; i < models.size(); ++i) {
        emu::CameraConfig config;
        config.address = tests::freshLoopbackAddress();
        config.manufacturer = "Emulated cameras";
        config.model = models[i].toStdString();
        config.serial = QString("C-%1").arg(i + 1, 3, 10, QChar('0')).toStdString();
        config.userName = QString("Line %1").arg(i + 1).toStdString();
        m_cameras.push_back(std::make_unique<emu::EmulatedCamera>(config));
        addresses.append(QString::fromStdString(config.address));
    }
    qputenv("KX_CAMERA_INTERFACES", "none");
    qputenv("KX_CAMERA_ADDRESSES", addresses.join(',').toLocal8Bit());

    QApplication::setStyle(QStyleFactory::create("Fusion"));
    Startup::registerResources();
    Startup::addFonts();
}

// Each slot has a window of its own, with the four cameras on the line.
void PersonTest::init()
{
    QDir(m_folder.filePath("shared")).removeRecursively();
    QDir().mkpath(m_folder.filePath("shared"));
    for (const auto& camera : m_cameras) {
        camera->stop(); // whatever a failed slot has left
        const emu::StartResult started = camera->start();
        QVERIFY2(started, started.message.c_str());
    }
    QVERIFY(LoadTranslations("ENG"));
    m_window = std::make_unique<MainWidget>();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    m_table = m_window->findChild<ORBCustomTableWidget*>();
    QVERIFY(m_table);
    QCOMPARE(m_window->windowTitle(), QString("Import/Export Features"));
    for (const char* serial : {"C-001", "C-002", "C-003", "C-004"})
        QTRY_VERIFY2_WITH_TIMEOUT(isListed(serial), serial, 10000);
}

void PersonTest::cleanup()
{
    m_window.reset();
    qDeleteAll(findChildren<QTimer*>()); // of what did not come
}

void PersonTest::seesTheCameras()
{
    const int row = rowOf("C-004");
    QCOMPARE(m_table->item(row, 2)->text(), QString("Belt camera"));
    QCOMPARE(m_table->item(row, 3)->text(), QString("Line 4"));
    QVERIFY(!button("ExportBtn")->isEnabled());
    QVERIFY(!button("ImportBtn")->isEnabled());
    for (const char* serial : {"C-001", "C-002", "C-003"})
        tick(serial);
    QCOMPARE(ticked("C-002"), Qt::Checked);
    QCOMPARE(ticked("C-004"), Qt::Unchecked);
    QVERIFY(button("ExportBtn")->isEnabled());
    picture("cameras");
}

// The features file of one camera, by way of the window; empty when there is none at the end.
QString PersonTest::exported(const QString& serial)
{
    const QString folder = m_folder.filePath("one");
    QDir().mkpath(folder);
    tick(serial);
    answerFileDialog(folder);
    bool wasTold = false;
    whenShown<ORBCustomSaveDoneHintDlg>([&wasTold](ORBCustomSaveDoneHintDlg* dialog) {
        wasTold = true;
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    click(button("ExportBtn"));
    if (!QTest::qWaitFor([&wasTold] { return wasTold; }, 20000))
        return {};
    back();
    tick(serial);
    const QStringList files = QDir(folder).entryList(QDir::Files);
    return files.isEmpty() ? QString() : QDir(folder).filePath(files.first());
}

void PersonTest::exportsThree()
{
    const QString folder = m_folder.filePath("features");
    QVERIFY(QDir().mkpath(folder));
    for (const char* serial : {"C-001", "C-002", "C-003"})
        tick(serial);
    answerFileDialog(folder);
    bool wasTold = false;
    whenShown<ORBCustomSaveDoneHintDlg>([&](ORBCustomSaveDoneHintDlg* dialog) {
        wasTold = true;
        QStringList texts;
        for (const QLabel* label : dialog->findChildren<QLabel*>())
            texts.append(label->text());
        QVERIFY2(texts.join('|').contains("Exporting process is over."), qPrintable(texts.join('|')));
        picture("export-done", dialog);
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    click(button("ExportBtn"));
    QTRY_VERIFY_WITH_TIMEOUT(wasTold, 20000);
    QCOMPARE(counters(), QStringList({"0", " Exporting", "3", " Exported.", "0", "Failed"}));
    for (const char* serial : {"C-001", "C-002", "C-003"}) {
        QCOMPARE(operationStatus(serial), QString("Exported."));
        QCOMPARE(ticked(serial), Qt::Checked); // its own jobs do not make a camera taken
    }
    QCOMPARE(operationStatus("C-004"), QString());
    QCOMPARE(QDir(folder).entryList(QDir::Files),
             QStringList({"Gate camera_C-001.fpk", "Gate camera_C-002.fpk", "Gate camera_C-003.fpk"}));
    picture("exported");
    back();
}

void PersonTest::importsWithOneFailing()
{
    const QString file = exported("C-001");
    QVERIFY(!file.isEmpty());
    for (const char* serial : {"C-002", "C-003", "C-004"})
        tick(serial);
    answerFileDialog(file);
    bool wasTold = false;
    whenShown<ORBCustomMessageBox>([&](ORBCustomMessageBox* box) {
        wasTold = true;
        picture("import-done", box);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    });
    click(button("ImportBtn"));
    QTRY_VERIFY_WITH_TIMEOUT(wasTold, 20000);
    QCOMPARE(counters(), QStringList({"0", " Importing", "2", " Imported.", "1", "Failed"}));
    QCOMPARE(operationStatus("C-002"), QString("Imported."));
    QCOMPARE(operationStatus("C-003"), QString("Imported."));
    const QTableWidgetItem* failed = m_table->item(rowOf("C-004"), 8);
    QCOMPARE(failed->text(), QString("Failed to import features. Camera models mismatch."));
    QCOMPARE(failed->foreground().color(), QColor(Qt::red));
    QCOMPARE(failed->toolTip(),
             QString("The Reasons of Failure :\r\nFailed to import features. Camera models mismatch."));
    picture("imported");
    back();
}

void PersonTest::seesACameraLeaveAndComeBack()
{
    m_cameras[2]->stop();
    QTRY_VERIFY_WITH_TIMEOUT(!isListed("C-003"), 15000);
    QVERIFY(isListed("C-002"));
    QCOMPARE(m_table->rowCount(), 10);
    QVERIFY(m_cameras[2]->start());
    QTRY_VERIFY_WITH_TIMEOUT(isListed("C-003"), 15000);
    m_cameras[0]->stealControl();
    QTRY_COMPARE_WITH_TIMEOUT(m_table->item(rowOf("C-001"), 7)->data(Qt::UserRole + 3).toInt(), 3, 15000);
    tick("C-001");
    QCOMPARE(ticked("C-001"), Qt::Unchecked);
    picture("in-use");
    m_cameras[0]->releaseControl();
    QTRY_COMPARE_WITH_TIMEOUT(m_table->item(rowOf("C-001"), 7)->data(Qt::UserRole + 3).toInt(), 1, 15000);
}

void PersonTest::choosesColumns()
{
    QVERIFY(m_table->isColumnHidden(3));
    click(button("CheckListBtn"));
    QCheckBox* userId = nullptr;
    for (QCheckBox* box : m_window->findChildren<QCheckBox*>())
        if (box->text() == "Device User ID")
            userId = box;
    QVERIFY(userId && userId->isVisible());
    QTest::mouseClick(userId, Qt::LeftButton, {}, QPoint(8, userId->height() / 2));
    QVERIFY(!m_table->isColumnHidden(3));
    picture("columns");
    click(button("CheckListBtn"));
    QVERIFY(!userId->isVisible());
}

void PersonTest::readsItInChinese()
{
    QVERIFY(LoadTranslations("CH"));
    QTRY_COMPARE(m_window->windowTitle(), QString::fromUtf8("导入/导出属性"));
    QVERIFY(button("ExportBtn")->text() != "Export");
    picture("chinese");
    QVERIFY(LoadTranslations("ENG"));
    QTRY_COMPARE(button("ExportBtn")->text(), QString("Export"));
}

QTEST_MAIN(PersonTest)
#include "person_test.moc"
