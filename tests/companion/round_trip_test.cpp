// What an import brings back: every feature of the emulated camera's export is changed behind the program's
// back, alone and then all together.
#include "camera_emulator/EmulatedCamera.h"
#include "support/LoopbackAddress.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace
{

// Name to block, as it stands in the file.
QMap<QString, QString> blocksOf(const QByteArray& file)
{
    static const QRegularExpression plain("<Feature>\r\n<Name>(\\w+)</Name>.*?</Feature>",
                                          QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression complex("<ComplexFeature name=\"(\\w+)\".*?</ComplexFeature>",
                                            QRegularExpression::DotMatchesEverythingOption);
    QMap<QString, QString> blocks;
    for (const QRegularExpression& form : {plain, complex}) {
        auto found = form.globalMatch(QString::fromUtf8(file));
        while (found.hasNext()) {
            const auto match = found.next();
            blocks.insert(match.captured(1), match.captured());
        }
    }
    return blocks;
}

QStringList difference(const QStringList& all, const QStringList& without)
{
    QStringList rest;
    for (const QString& one : all)
        if (!without.contains(one))
            rest += one;
    return rest;
}

// Their values stand in the description and not in the camera, so that each connection begins with them anew;
// and the control that the job itself holds while it looks.
const QStringList kNotInTheCamera = {
    "BlackLevelSelector", "CounterSelector", "GainSelector",   "GevCCP",
    "LUTIndex",           "LUTSelector",     "LineBank",       "MatrixColumn",
    "MatrixRow",          "ScratchIndex",    "ShutterBank",    "ShutterSelector",
    "TimerSelector",      "TriggerSelector", "UserOutputBank", "UserOutputSelector"};

// The features of the table in docs/file-format.md that says what an import cannot bring back.
QStringList documentedExceptions()
{
    QFile file(IE_FILE_FORMAT);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QString text = QString::fromUtf8(file.readAll());
    text = text.mid(text.indexOf("## What an import cannot bring back"));
    text = text.mid(text.indexOf("| what | of the emulated camera |"));
    text = text.left(text.indexOf("\n\n"));
    QStringList names;
    for (const QString& row : text.split('\n').mid(2)) {
        auto found = QRegularExpression("`(\\w+)`").globalMatch(row.section('|', 2, 2));
        while (found.hasNext())
            names += found.next().captured(1);
    }
    names.sort();
    return names;
}

// What shows the values of other nodes' registers: the place to change.
const QMap<QString, QString> kNodeBehind = {{"Gamma", "GammaReg"},
                                            {"PayloadSize", "Height"},
                                            {"ResultingFrameRate", "AcquisitionFrameRate"},
                                            {"WidthMax", "BinningHorizontal"}};
// Registers that other nodes' values choose, for the values that they have.
const QMap<QString, uint32_t> kRegisterBehind = {{"CounterLimit", 0x15224},
                                                 {"LUTComment", 0x14200},
                                                 {"TimerDuration", 0x15304},
                                                 {"UserOutputLimit", 0x15188}};

emu::NodeValue otherThan(const std::string& name, const emu::NodeValue& value)
{
    if (name == "BlackLevelClamp")
        return int64_t(0); // stands as another number in its register
    if (const auto* number = std::get_if<int64_t>(&value))
        return *number ^ 1;
    if (const auto* real = std::get_if<double>(&value))
        return *real + 1;
    return std::get<std::string>(value) + "x";
}

class RoundTrip : public testing::Test
{
protected:
    RoundTrip()
    {
        config.address = tests::freshLoopbackAddress();
        camera = std::make_unique<emu::EmulatedCamera>(config);
        const auto started = camera->start();
        EXPECT_TRUE(started) << started.message;
        first = exported();
        firstFile = folder.path() + "/first";
        QFile copy(firstFile);
        EXPECT_TRUE(copy.open(QIODevice::WriteOnly) && copy.write(first) == first.size());
    }

    QByteArray exported() const { return tests::exportCamera(config, folder.path()).file; }
    QString exportedBlock(const QString& name) const { return blocksOf(exported()).value(name); }

    void flip(uint32_t address) { camera->poke(address, {uint8_t(camera->peek(address, 1)[0] ^ 1)}); }

    // Changes what stands behind a feature: its register, or the first one of its block.
    void change(const QString& feature, const QString& block)
    {
        const std::string node = kNodeBehind.value(feature, feature).toStdString();
        if (kRegisterBehind.contains(feature)) {
            flip(kRegisterBehind.value(feature) + 2);
            return;
        }
        const auto value = camera->node(node);
        if (value && camera->setNode(node, otherThan(node, *value)).empty())
            return;
        static const QRegularExpression entry("len=\"(\\d+)\".*?address=\"(\\d+)\"",
                                              QRegularExpression::DotMatchesEverythingOption);
        const auto found = entry.match(block);
        ASSERT_TRUE(found.hasMatch()) << feature.toStdString();
        flip(found.captured(2).toUInt() + std::min(found.captured(1).toUInt(), 4u) - 1);
    }

    // The features of `names` that a change behind the program's back and an import leave changed.
    QStringList lostOf(const QStringList& names)
    {
        const emu::Bytes bootstrap = camera->peek(0, 0x10000);
        const emu::Bytes settings = camera->peek(0x10000, 0x10000);
        const auto blocks = blocksOf(first);
        QStringList lost;
        for (const QString& name : names) {
            change(name, blocks.value(name));
            EXPECT_NE(exportedBlock(name), blocks.value(name)) << name.toStdString() << " did not change";
            tests::importFile(config, firstFile);
            if (exportedBlock(name) != blocks.value(name))
                lost += name;
            camera->poke(0, bootstrap);
            camera->poke(0x10000, settings);
        }
        return lost;
    }

    emu::CameraConfig config;
    std::unique_ptr<emu::EmulatedCamera> camera;
    QTemporaryDir folder;
    QByteArray first;
    QString firstFile;
};

} // namespace

TEST_F(RoundTrip, BringsBackEveryFeatureButTheDocumentedExceptions)
{
    EXPECT_EQ(lostOf(difference(blocksOf(first).keys(), kNotInTheCamera)), documentedExceptions());
    EXPECT_EQ(exported(), first);
}

// The changes that "./run --demo --headless" makes: every feature that can be brought back, all at once.
TEST_F(RoundTrip, BringsBackTheFileByteForByte)
{
    QFile changes(IE_DEMO_CHANGES);
    ASSERT_TRUE(changes.open(QIODevice::ReadOnly));
    EXPECT_EQ(camera->change(changes.readAll().toStdString()), std::vector<std::string>());

    const auto before = blocksOf(first);
    const auto between = blocksOf(exported());
    QStringList same;
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        if (between.value(it.key()) == it.value())
            same += it.key();
    QStringList expected = kNotInTheCamera + documentedExceptions();
    expected.sort();
    EXPECT_EQ(same, expected);

    const tests::ImportOutcome outcome = tests::importFile(config, firstFile);
    EXPECT_EQ(outcome.messages, QStringList());
    EXPECT_EQ(outcome.errorCode, 0u);
    EXPECT_TRUE(exported() == first);
}
