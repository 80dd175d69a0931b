// What the window's tests share: a window whose cameras, dialogs, folders and device limit the test decides.
#pragma once

#include "MainWidgetProbe.h"
#include "support/QtPrinting.h"
#include "support/RecordingSuiteTools.h"
#include "support/ScriptedCamera.h"

#include <StyledCtl/DialogHooks.h>

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

// One camera as a search finds it.
struct Camera
{
    QByteArray serial;
    quint32 availability = KX_AVAILABILITY_FREE;
    quint32 transport = KX_TRANSPORT_GIGE;
    QByteArray interfaceName = "eth0";
    QByteArray model = "Cam";
    QByteArray user = {};
    QByteArray portId = {};
    quint32 macHigh = 0x0011;
    quint32 macLow = 0x22334455;
};

KX_DeviceEntry entryOf(const Camera& camera);

// "S1", "S2", ... as free GigE cameras.
QVector<Camera> freeCameras(int count);

// A call of the open-file or the open-folder dialog.
struct PathQuestion
{
    QWidget* parent = nullptr;
    QString caption, start, filter;
};

class WindowFixture : public ::testing::Test
{
protected:
    enum Column
    {
        Check = 0,
        PortId = 1,
        Model = 2,
        User = 3,
        Serial = 4,
        Interface = 5,
        Mac = 6,
        Status = 7,
        Operation = 8
    };

    WindowFixture();
    ~WindowFixture() override;

    // Builds the window; not shown. With a device limit: that of the suite's library.
    void open(unsigned int limit = 32);
    void closeWindow();
    // Without waiting for the workers.
    void destroyWindow();

    // The tree finds exactly these cameras; when it returns, the window has been told.
    void find(const QVector<Camera>& cameras);
    // The tree's item of a camera, by the serial number.
    QTreeWidgetItem* item(const QByteArray& serial) const;
    int idOf(const QByteArray& serial) const;
    // The table's row of it, -1 when there is none.
    int rowOf(const QByteArray& serial) const;
    void select(QTreeWidgetItem* node);
    // The interface's node above a camera.
    QTreeWidgetItem* interfaceOf(const QByteArray& serial) const { return item(serial)->parent(); }

    // As a person does it.
    void tick(int row);
    void tick(const QByteArray& serial) { tick(rowOf(serial)); }
    void clickHeaderBox();

    ORBCustomTableWidget& table() const { return *probe->table; }
    bool isTicked(int row) const { return table().cellCheckState(row, 0) == Qt::Checked; }
    QList<int> tickedRows() const;
    QList<int> hiddenColumns() const;
    QList<int> hiddenRows() const;
    Qt::CheckState headerState() const;
    QString text(int row, int column) const;
    QString operation(const QByteArray& serial) const { return text(rowOf(serial), Operation); }
    QString tip(const QByteArray& serial) const;

    // The settings file.
    QString configFile() const { return folder.filePath("data/LocalConfig.ini"); }
    void setSetting(const QString& key, const QVariant& value);
    QVariant setting(const QString& key) const;
    static constexpr char kMaskKey[] = "View/MultiImportExportFeaturesShowFlage";

    // The program's own texts in Chinese, from now on.
    void speakChinese();
    void speakEnglish();

    // Handles events until `isDone`, for at most ten seconds; gives whether it is.
    static bool waitFor(const std::function<bool()>& isDone);
    static void handleEvents();

    QTemporaryDir folder;
    std::unique_ptr<MainWidget> window;
    std::unique_ptr<MainWidgetProbe> probe;

    QList<ORBCustom::DialogRequest> messages; // message boxes and save-done dialogs, as they came
    QList<PathQuestion> fileQuestions, folderQuestions;
    QString fileAnswer, folderAnswer;
    // What the button in the task bar was told: "DONE/ALL", "DONE/ALL failed", "end".
    QStringList taskbar;
    std::function<void()> whileFileDialogIsOpen;
    std::function<void(const ORBCustom::DialogRequest&)> whileMessageIsShown;

private:
    QThread* scanner() const;

    QTranslator m_translator;
};
