#include "JobFixture.h"

namespace
{

StructDeviceInfo record(quint32 transport, const QByteArray& model, const QByteArray& serial, int id)
{
    StructDeviceInfo device;
    device.nDeviceID = id;
    device.nStatus = 1;
    device.stDeviceInfo = tests::deviceInfo(transport, serial, model);
    return device;
}

} // namespace

StructDeviceInfo gigeDevice(const QByteArray& model, const QByteArray& serial, int id)
{
    return record(KX_TRANSPORT_GIGE, model, serial, id);
}

StructDeviceInfo usbDevice(const QByteArray& model, const QByteArray& serial, int id)
{
    return record(KX_TRANSPORT_USB3, model, serial, id);
}

StructDeviceInfo cameraLinkDevice(const QByteArray& model, const QByteArray& serial, int id)
{
    return record(KX_TRANSPORT_CAMERA_LINK, model, serial, id);
}

JobFixture::JobFixture()
{
    tests::resetScriptedCamera();
    tests::resetSuiteTools();
    recorder.clear();
    device = gigeDevice("Cam", "S1", 7);
    camera = &tests::scriptedDevice("S1");
    watch(worker);
}

JobFixture::~JobFixture()
{
    EXPECT_EQ(tests::cameraViolations(), QStringList());
    for (const tests::TraceEntry& line : recorder.logs()) {
        EXPECT_EQ(line.level, QtCriticalMsg) << line.text.toStdString();
        EXPECT_EQ(line.file, QByteArray("..\\..\\src\\VELA_Import_Export_Features\\QOperateThread"))
            << line.text.toStdString();
        EXPECT_GT(line.line, 0) << line.text.toStdString();
        EXPECT_TRUE(line.function.endsWith(')') || line.function.endsWith("const"))
            << line.function.constData(); // a whole signature
    }
}

void JobFixture::watch(QOperateThread& watched)
{
    const auto begin = [this](long id, unsigned int type) {
        recorder.addSignal("begin", {qlonglong(id), type});
    };
    const auto end = [this](long id, unsigned int type, const QString& path) {
        recorder.addSignal("end", {qlonglong(id), type, path});
    };
    const auto info = [this](long id, const QString& text, bool failed) {
        recorder.addSignal("info", {qlonglong(id), failed ? "failed" : "told", text});
    };
    QObject::connect(&watched, &QOperateThread::SigBeginThread, &watched, begin, Qt::DirectConnection);
    QObject::connect(&watched, &QOperateThread::SigEndThread, &watched, end, Qt::DirectConnection);
    QObject::connect(&watched, &QOperateThread::SigThreadInfo, &watched, info, Qt::DirectConnection);
}

void JobFixture::run()
{
    worker.start(QThread::InheritPriority);
    ASSERT_TRUE(worker.wait(60000));
}

void JobFixture::runExport()
{
    runExport(device);
}

void JobFixture::runExport(const StructDeviceInfo& device_)
{
    worker.SetXmlExportJob(device_, folder.path());
    run();
}

void JobFixture::describe(const QStringList& nodes)
{
    QString listed;
    for (const QString& node : nodes)
        listed +=
            "<pFeature>" + QRegularExpression("Name=\"([^\"]*)\"").match(node).captured(1) + "</pFeature>";
    const QString text = "<RegisterDescription><Category Name=\"Root\"><pFeature>All</pFeature></Category>"
                         "<Category Name=\"All\">" +
                         listed + "</Category>" + nodes.join("") + "</RegisterDescription>";
    camera->setDescription(text.toUtf8());
}

void JobFixture::makeExportable()
{
    camera->setString("DeviceFirmwareVersion", "V1");
    describe({});
}

void JobFixture::failNode(const QByteArray& name, KX_Status status)
{
    camera->clearRules();
    for (const char* operation :
         {"GetBoolValue", "GetEnumValue", "GetFloatValue", "GetIntValueEx", "GetStringValue", "SetBoolValue",
          "SetEnumValue", "SetFloatValue", "SetIntValueEx", "SetStringValue", "GetNodeAccessMode"})
        camera->addRule({operation, status, name});
}

void JobFixture::failCall(const QByteArray& operation, KX_Status status)
{
    camera->clearRules();
    camera->addRule({operation, status});
}

QStringList JobFixture::trace() const
{
    return recorder.texts();
}

QStringList JobFixture::takeTrace()
{
    const QStringList texts = trace();
    recorder.clear();
    return texts;
}

QByteArrayList JobFixture::callNames() const
{
    QByteArrayList names;
    for (const tests::TraceEntry& call : recorder.calls())
        if (!call.name.isEmpty())
            names.append(call.name);
    return names;
}

void JobFixture::writeTarget(const QByteArray& bytes)
{
    QFile file(target());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray JobFixture::fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray JobFixture::features() const
{
    const QByteArray bytes = fileBytes();
    const int begin = bytes.indexOf("<Features>\r\n") + 12;
    return begin < 12 ? QByteArray("no features") : bytes.mid(begin, bytes.indexOf("</Features>") - begin);
}
