#include "BatchFixture.h"

#include <QTimer>

BatchFixture::~BatchFixture()
{
    letJobsGo();
    waitForAllWorkers();
    closeWindow();
    tests::setCallHook(nullptr);
}

void BatchFixture::waitForAllWorkers()
{
    for (const QPointer<QOperateThread>& worker : qAsConst(m_seen))
        if (worker)
            worker->wait();
}

void BatchFixture::readyCameras(int count)
{
    const QByteArray description = "<RegisterDescription><Category Name=\"Root\"><pFeature>All</pFeature>"
                                   "</Category><Category Name=\"All\"></Category></RegisterDescription>";
    const QVector<Camera> cameras = freeCameras(count);
    for (const Camera& camera : cameras) {
        tests::ScriptedDevice& device = tests::scriptedDevice(camera.serial);
        device.setString("DeviceFirmwareVersion", "V1");
        device.setEnumeration("DeviceScanType", 0, {0, 1});
        device.setDescription(description);
    }
    find(cameras);
    for (int row = 0; row < count; ++row)
        table().setCellCheckState(row, Check, Qt::Checked, true);
}

QString BatchFixture::importFile()
{
    const QString path = folder.filePath("in.fpk");
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?><FeaturesFile version=\"7.8.9\">"
               "<DeviceFirmwareVersion>V1</DeviceFirmwareVersion><DeviceModelName>Cam</DeviceModelName>"
               "<Features></Features></FeaturesFile>");
    return path;
}

void BatchFixture::runImport(const QString& file)
{
    fileAnswer = file;
    probe->importButton->click();
}

void BatchFixture::runExport(const QString& path)
{
    folderAnswer = path;
    probe->exportButton->click();
}

void BatchFixture::holdJobs()
{
    m_gate = std::make_shared<tests::Gate>();
    tests::setCallHook([gate = m_gate](const QByteArray&, const tests::TraceEntry& call) {
        if (call.operation == "CreateHandle")
            gate->pass();
    });
}

void BatchFixture::letJobsGo()
{
    if (m_gate)
        m_gate->open();
}

void BatchFixture::runExportTogether(int count, const QString& path)
{
    holdJobs();
    duringBatch([this, count] { return probe->running == count; }, [this] { letJobsGo(); });
    runExport(path);
}

void BatchFixture::duringBatch(std::function<bool()> ready, std::function<void()> action)
{
    QTimer* timer = new QTimer(window.get());
    QObject::connect(timer, &QTimer::timeout, timer, [this, timer, ready, action] {
        for (QOperateThread* worker : qAsConst(probe->workers))
            if (!m_seen.contains(worker))
                m_seen.append(worker);
        if (!probe->loading->isVisible() || !ready())
            return;
        timer->stop();
        timer->deleteLater();
        action();
        actionDone = true;
    });
    timer->start(2);
}
