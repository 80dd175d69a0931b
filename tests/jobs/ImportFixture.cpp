#include "ImportFixture.h"

QByteArray plainFeature(const QByteArray& name, const QByteArray& type, const QByteArray& value)
{
    return "<Feature><Name>" + name + "</Name><Type>" + type + "</Type><Value>" + value +
           "</Value></Feature>";
}

QByteArray registerFeature(const QByteArray& name, const QByteArray& reg, const QByteArray& len,
                           const QByteArray& entries)
{
    const auto attribute = [](const QByteArray& key, const QByteArray& value) {
        return value.isNull() ? QByteArray() : " " + key + "=\"" + value + "\"";
    };
    return "<ComplexFeature" + attribute("name", name) + attribute("reg", reg) + attribute("len", len) + ">" +
           entries + "</ComplexFeature>";
}

QByteArray registerEntry(const QByteArray& address, const QByteArray& text, const QByteArray& more)
{
    return "<RegValue address=\"" + address + "\" " + more + ">" + text + "</RegValue>";
}

QByteArray featuresFile(const QByteArray& inside, const QByteArray& version)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><FeaturesFile version=\"" + version + "\">" + inside +
           "</FeaturesFile>";
}

QByteArray fittingFile(const QByteArray& features, const QByteArray& version)
{
    return featuresFile("<DeviceFirmwareVersion>V1</DeviceFirmwareVersion>"
                        "<DeviceModelName>Cam</DeviceModelName><Features>" +
                            features + "</Features>",
                        version);
}

ImportFixture::ImportFixture()
{
    camera->setString("DeviceFirmwareVersion", "V1");
    camera->setEnumeration("DeviceScanType", 0, {0, 1});
}

void ImportFixture::import(const QByteArray& bytes)
{
    QFile file(source());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
    file.close();
    importPath(source());
}

void ImportFixture::importPath(const QString& path)
{
    takeTrace();
    worker.SetXmlImportJob(device, path);
    run();
}

QStringList ImportFixture::inside() const
{
    const QStringList events = trace();
    const int begin = events.indexOf("OpenDevice 1 0") + 1;
    return events.mid(begin, events.indexOf("CloseDevice") - begin);
}

QStringList ImportFixture::applied() const
{
    const QStringList events = inside();
    return events.mid(events.indexOf("GetStringValue DeviceFirmwareVersion") + 1);
}

QStringList ImportFixture::writes() const
{
    return applied().filter(QRegularExpression("^(Set(Bool|Enum|Float|Int|String)Value|WriteMemory)"));
}

void ImportFixture::expectSilentEnd(unsigned int code)
{
    EXPECT_EQ(infos(), QStringList());
    EXPECT_EQ(worker.ErrorCode(), code);
    EXPECT_EQ(trace().mid(trace().size() - 3),
              QStringList({"CloseDevice", "DestroyHandle", "end 7 2 " + probe.path + "/Cam_S1.fpk"}));
}

QString nodeFailure(const QString& name, const QString& status)
{
    return QString("log \"Operate Feature Failed; NodeName : %1;  ErrorCode : %2\"").arg(name, status);
}

QString registerFailure(const QString& name, const QString& address)
{
    return QString("log \"SetValueFromReg  failed:%1 addr:%2\"").arg(name, address);
}
