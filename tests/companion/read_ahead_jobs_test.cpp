// Exports and imports with and without reading ahead: the same files and the same registers afterwards. Over
// the emulator's own description, and over real ones from the folder that KX_DESCRIPTIONS names, with several
// memories, with registers that are refused and with a camera without batches.
#include "camera_emulator/EmulatedCamera.h"
#include "companion/RealSeed.h"
#include "support/LoopbackAddress.h"
#include "support/OwnDescription.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace
{

// Numbers for all registers that have a place of their own: zeros, small ones, or ones for yes and no.
enum class Memory
{
    Zeros,
    Ones,
    Small
};

int numberOf(const QString& name, Memory memory)
{
    return memory == Memory::Ones ? 1 : memory == Memory::Small ? int(qHash(name, 7) % 5) : 0;
}

// Heartbeat, control and the like have to be as they are.
bool isStandard(const QDomElement& reg)
{
    const QString text = reg.firstChildElement("Address").text();
    return text.toLongLong(nullptr, 0) < qint64(gvcp::BootstrapSize);
}

class ReadAheadJobs
    : public ::testing::TestWithParam<QString> // a description's file; empty: the emulator's own
{
protected:
    emu::CameraConfig configOf(Memory memory, bool hasBatches = true)
    {
        emu::CameraConfig config;
        config.address = m_address; // the camera shows it in its registers
        config.concatenation = hasBatches;
        if (GetParam().isEmpty())
            return config;
        config.descriptionFile = GetParam().toStdString();
        QFile file(GetParam());
        tests::OwnDescription own;
        EXPECT_TRUE(file.open(QIODevice::ReadOnly) && own.index.index(QString::fromUtf8(file.readAll())));
        QJsonObject nodes = QJsonDocument::fromJson(tests::seedFor(own.nodes)).object()["nodes"].toObject();
        for (auto it = own.nodes.cbegin(); it != own.nodes.cend(); ++it)
            if (it->tagName() == "IntReg" && memory != Memory::Zeros && !nodes.contains(it.key()) &&
                !isStandard(*it))
                nodes[it.key()] = numberOf(it.key(), memory);
        config.seed = QJsonDocument(QJsonObject{{"nodes", nodes}}).toJson().toStdString();
        return config;
    }

    const std::string m_address = tests::freshLoopbackAddress();

    // What `work` comes to in each way.
    template <class Work>
    auto inBothWays(Work work)
    {
        qputenv("KX_CAMERA_READ_AHEAD", "0");
        auto singly = work();
        qunsetenv("KX_CAMERA_READ_AHEAD");
        return std::make_pair(singly, work());
    }

    QByteArray fileOf(const emu::CameraConfig& config)
    {
        const QTemporaryDir folder;
        return tests::exportCamera(config, folder.path()).file;
    }
};

// With other values, so that an import has something to write.
QByteArray changed(QByteArray text)
{
    return text.replace("<Value>0</Value>", "<Value>1</Value>")
        .replace("\">0x0</RegValue>", "\">0x1</RegValue>")
        .replace("\">0</RegValue>", "\">1</RegValue>");
}

} // namespace

TEST_P(ReadAheadJobs, ExportTheSameBytes)
{
    for (const Memory memory : {Memory::Zeros, Memory::Ones, Memory::Small}) {
        for (const bool hasBatches : {true, false}) {
            const emu::CameraConfig config = configOf(memory, hasBatches);
            emu::EmulatedCamera camera(config);
            ASSERT_TRUE(camera.start());
            const auto [singly, ahead] = inBothWays([&] { return fileOf(config); });
            EXPECT_EQ(singly, ahead);
        }
    }
}

TEST_P(ReadAheadJobs, ExportTheSameBytesFromACameraThatRefusesSome)
{
    const emu::CameraConfig config = configOf(Memory::Ones);
    emu::EmulatedCamera camera(config);
    ASSERT_TRUE(camera.start());
    emu::Faults faults;
    for (uint32_t address = 0x100; address < 0x40000; address += 0x1234)
        faults.refusals.push_back({address / 4 * 4, 8, gvcp::InvalidAddress});
    for (const bool refusesBatches : {false, true}) {
        faults.refuseConcatenation = refusesBatches;
        camera.setFaults(faults);
        const auto [singly, ahead] = inBothWays([&] { return fileOf(config); });
        EXPECT_EQ(singly, ahead);
    }
}

TEST_P(ReadAheadJobs, ImportTheSameValues)
{
    const QTemporaryDir folder;
    const auto [singly, ahead] = inBothWays([&] {
        const emu::CameraConfig config = configOf(Memory::Small);
        emu::EmulatedCamera camera(config);
        EXPECT_TRUE(camera.start());
        const QString path = folder.filePath("file.fpk");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(changed(fileOf(config)));
        file.close();
        camera.resetCounters();
        const tests::ImportOutcome outcome = tests::importFile(config, path);
        return std::make_tuple(outcome.errorCode, outcome.log, camera.counters().settingWrites,
                               fileOf(config));
    });
    EXPECT_EQ(std::get<0>(singly), std::get<0>(ahead));
    EXPECT_EQ(std::get<1>(singly), std::get<1>(ahead));
    EXPECT_EQ(std::get<2>(singly), std::get<2>(ahead));
    EXPECT_EQ(std::get<3>(singly), std::get<3>(ahead));
}

TEST_P(ReadAheadJobs, AreNotMisledByWrongBatches)
{
    const emu::CameraConfig config = configOf(Memory::Small);
    emu::EmulatedCamera camera(config);
    ASSERT_TRUE(camera.start());
    for (const auto answer :
         {emu::BatchAnswer::TooFew, emu::BatchAnswer::TooMany, emu::BatchAnswer::Reversed}) {
        emu::Faults faults;
        faults.batchAnswer = answer;
        camera.setFaults(faults);
        const auto [singly, ahead] = inBothWays([&] { return fileOf(config); });
        EXPECT_EQ(singly, ahead);
    }
}

namespace
{

QList<QString> descriptions()
{
    QList<QString> paths{QString()};
    const QDir folder(qEnvironmentVariable("KX_DESCRIPTIONS"));
    if (qEnvironmentVariableIsSet("KX_DESCRIPTIONS"))
        for (const QString& name : folder.entryList({"*.xml"}, QDir::Files, QDir::Name))
            paths.append(folder.filePath(name));
    return paths;
}

std::string titleOf(const ::testing::TestParamInfo<QString>& info)
{
    QString title = info.param.isEmpty() ? QString("Emulator") : QFileInfo(info.param).completeBaseName();
    for (QChar& c : title)
        c = c.isLetterOrNumber() ? c : QChar('_');
    return title.toStdString();
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Descriptions, ReadAheadJobs, ::testing::ValuesIn(descriptions()), titleOf);
