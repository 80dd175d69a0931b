// Exports from emulated cameras that serve the descriptions of real ones, from the folder that
// KX_DESCRIPTIONS names. What is in such a file has to agree with the camera, and what is missing has to be
// explained.
#include "camera_emulator/EmulatedCamera.h"
#include "companion/RealSeed.h"
#include "companion/RegisterRule.h"
#include "companion/WhyLeftOut.h"
#include "gvcp/Gvcp.h"
#include "jobs/file/FeaturesFile.h"
#include "jobs/worker/QOperateThread.h"
#include "support/LoopbackAddress.h"
#include "support/OwnDescription.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"

#include <SuiteTools/SuiteTools.h>

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>

namespace
{

struct Row
{
    QString name;
    int listed = 0;
    int plain = 0;
    int complex = 0;
    int leftOut = 0;
    double seconds = 0;
    quint64 requests = 0;
    bool exported = false; // else there is no file, as there is no firmware version
    ie::FeaturesContent content;
};

// What an index of the description lists and knows.
struct Indexed
{
    explicit Indexed(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly) &&
                    description.index.index(QString::fromUtf8(file.readAll())));
        for (const QString& name : qAsConst(description.featureNames)) {
            if (description.nodes.contains(name))
                listed += name;
        }
    }

    tests::OwnDescription description;
    QSet<QString> listed;
};

// A connection of its own, to ask again what the file says.
class Connection
{
public:
    explicit Connection(const emu::CameraConfig& config)
    {
        const KX_DeviceInfo device = tests::deviceRecord(config).stDeviceInfo;
        EXPECT_EQ(KX_CC_CreateHandle(&m_handle, &device), KX_OK);
        EXPECT_EQ(KX_CC_OpenDevice(m_handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    }
    ~Connection() { KX_CC_DestroyHandle(m_handle); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // What the getter of that node kind answers, as a features file writes it; a sentence when it refuses.
    QString value(const ie::PlainFeature& feature) const;

private:
    KX_HANDLE m_handle = nullptr;
};

QString Connection::value(const ie::PlainFeature& feature) const
{
    const QByteArray name = feature.name.toLatin1();
    KX_Status status = KX_E_GC_LOGICAL;
    QString text;
    if (feature.type == "Boolean") {
        bool value = false;
        status = KX_CC_GetBoolValue(m_handle, name, &value);
        text = value ? "1" : "0";
    } else if (feature.type == "Integer" || feature.type == "IntReg") {
        KX_IntegerValue value = {};
        status = KX_CC_GetIntValueEx(m_handle, name, &value);
        text = QString::number(value.current);
    } else if (feature.type == "Enumeration") {
        KX_EnumValue value = {};
        status = KX_CC_GetEnumValue(m_handle, name, &value);
        text = QString::number(value.current);
    } else if (feature.type == "Float") {
        KX_FloatValue value = {};
        status = KX_CC_GetFloatValue(m_handle, name, &value);
        text = QString::number(double(value.current), 'f', 6);
    } else if (feature.type == "StringReg") {
        KX_StringValue value = {};
        status = KX_CC_GetStringValue(m_handle, name, &value);
        text = VELAInterface::char2QStringLocale(value.current, -1);
    }
    return status == KX_OK ? text : QString("status 0x%1").arg(status, 8, 16, QChar('0'));
}

emu::CameraConfig configFor(const QFileInfo& description, const QMap<QString, QDomElement>& nodes)
{
    emu::CameraConfig config;
    config.address = tests::freshLoopbackAddress();
    config.model = description.completeBaseName().left(31).toStdString();
    config.descriptionFile = description.filePath().toStdString();
    config.seed = tests::seedFor(nodes).toStdString();
    return config;
}

void expectNothingSkipped(const ie::FeaturesContent& content, const QMap<QString, QDomElement>& nodes)
{
    for (const auto& entry : content.entries) {
        const QString name = entry.isComplex ? entry.complex.name : entry.plain.name;
        EXPECT_EQ(tests::ruleAgainst(name, nodes), QString()) << name.toStdString();
    }
}

void expectVisitOrder(const ie::FeaturesContent& content)
{
    QString last;
    for (const auto& entry : content.entries) {
        const QString name = entry.isComplex ? entry.complex.name : entry.plain.name;
        EXPECT_LT(last, name);
        last = name;
    }
}

// Plain values as the camera library gives them, registers as they lie in the camera.
void expectTheCamerasValues(const ie::FeaturesContent& content, const emu::EmulatedCamera& camera)
{
    const Connection connection(camera.config());
    for (const auto& entry : content.entries) {
        if (!entry.isComplex) {
            // The file is written in the system's encoding, and read as UTF-8.
            const QString value = QString::fromUtf8(connection.value(entry.plain).toLocal8Bit());
            EXPECT_EQ(entry.plain.value, value) << entry.plain.name.toStdString();
            continue;
        }
        EXPECT_FALSE(entry.complex.values.isEmpty()) << entry.complex.name.toStdString();
        EXPECT_EQ(tests::registerDifferences(entry.complex, camera), QStringList())
            << entry.complex.name.toStdString();
    }
}

void expectExplanations(const QSet<QString>& leftOut, const QMap<QString, QDomElement>& nodes,
                        const QStringList& log)
{
    for (const QString& name : leftOut)
        EXPECT_NE(tests::whyLeftOut(name, nodes, log), QString()) << name.toStdString();
}

void expectNoFile(const tests::ExportOutcome& outcome)
{
    EXPECT_TRUE(outcome.file.isNull());
    EXPECT_EQ(outcome.messages, QStringList{"Failed to save feature."});
    EXPECT_EQ(outcome.log.value(outcome.log.size() - 1), "Get XML_NODE_FIRMWARE failed.");
}

void checkFile(const tests::ExportOutcome& outcome, const emu::EmulatedCamera& camera, const Indexed& index,
               Row& row)
{
    EXPECT_EQ(outcome.messages, QStringList());
    QDomDocument document;
    ASSERT_TRUE(document.setContent(outcome.file));
    row.content = ie::readFeatures(document.documentElement());
    ASSERT_TRUE(row.content.hasFeatures);
    EXPECT_EQ(row.content.header.firmware, "1.2.3");
    QSet<QString> leftOut = index.listed;
    for (const auto& entry : row.content.entries) {
        EXPECT_TRUE(leftOut.remove(entry.isComplex ? entry.complex.name : entry.plain.name));
        ++(entry.isComplex ? row.complex : row.plain);
    }
    row.leftOut = leftOut.size();
    expectVisitOrder(row.content);
    expectNothingSkipped(row.content, index.description.nodes);
    expectTheCamerasValues(row.content, camera);
    expectExplanations(leftOut, index.description.nodes, outcome.log);
}

Row exportOnce(emu::EmulatedCamera& camera, const Indexed& index, const QString& name)
{
    Row row;
    row.name = name;
    row.listed = index.listed.size();
    row.exported = index.description.nodes.contains("DeviceFirmwareVersion");
    const QTemporaryDir folder;
    camera.resetCounters();
    QElapsedTimer watch;
    watch.start();
    const tests::ExportOutcome outcome = tests::exportCamera(camera.config(), folder.path());
    row.seconds = watch.elapsed() / 1000.0;
    row.requests = camera.counters().requests();
    if (row.exported)
        checkFile(outcome, camera, index, row);
    else
        expectNoFile(outcome);
    return row;
}

// Gives the registers of an export small values that differ from word to word, so that what is read from a
// wrong place shows. The registers of GigE Vision stay as they are.
void fillRegisters(const ie::FeaturesContent& content, emu::EmulatedCamera& camera)
{
    for (const auto& entry : content.entries) {
        for (const ie::RegisterValue& value : entry.complex.values) {
            for (qint64 at = value.address; at < value.address + entry.complex.length; at += 4) {
                if (at >= gvcp::BootstrapSize && at % 4 == 0)
                    camera.pokeWord(static_cast<uint32_t>(at), 1 + static_cast<uint32_t>(at / 4 % 251));
            }
        }
    }
}

// Exported as seeded, and once more with values in the registers that the first file names.
QList<Row> tryDescription(const QFileInfo& description)
{
    const Indexed index(description.filePath());
    emu::EmulatedCamera camera(configFor(description, index.description.nodes));
    const auto started = camera.start();
    EXPECT_TRUE(started) << started.message;
    QList<Row> rows{exportOnce(camera, index, description.completeBaseName())};
    if (rows.first().exported) {
        fillRegisters(rows.first().content, camera);
        rows += exportOnce(camera, index, "  with other values");
    }
    return rows;
}

void print(const QList<Row>& rows)
{
    std::printf("%-28s %7s %7s %8s %9s %8s %9s\n", "description", "listed", "plain", "complex", "left out",
                "seconds", "requests");
    for (const Row& row : rows) {
        std::printf("%-28s %7d %7d %8d %9d %8.2f %9llu%s\n", qPrintable(row.name), row.listed, row.plain,
                    row.complex, row.leftOut, row.seconds, static_cast<unsigned long long>(row.requests),
                    row.exported ? "" : "  no firmware version, no file");
    }
}

} // namespace

TEST(RealDescriptions, areExportedOrTellWhyNot)
{
    if (qEnvironmentVariableIsEmpty("KX_DESCRIPTIONS")) {
        std::puts("SKIPPED: KX_DESCRIPTIONS names no folder");
        GTEST_SKIP();
    }
    QList<Row> rows;
    int tried = 0;
    int exported = 0;
    const QDir folder(qEnvironmentVariable("KX_DESCRIPTIONS"));
    for (const QFileInfo& description : folder.entryInfoList({"*.xml"}, QDir::Files, QDir::Name)) {
        SCOPED_TRACE(description.fileName().toStdString());
        rows += tryDescription(description);
        ++tried;
        exported += rows.last().exported;
    }
    print(rows);
    EXPECT_GE(exported * 15, tried * 8) << "too few descriptions with a firmware version";
    EXPECT_GT(tried, 0);
}
