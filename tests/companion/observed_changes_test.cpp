#include "iefeatures/running/ObservedChanges.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <cstring>

using companion::Change;
using companion::ObservedChanges;

namespace
{

class Changes : public ::testing::Test
{
protected:
    void node(uint32_t operation, const char* name, const void* value, KX_Status status = KX_OK)
    {
        KX_CallEvent event{};
        event.operation = operation;
        event.finished = 1;
        event.nodeName = name;
        event.status = status;
        event.value = value;
        observed.take(event);
    }
    void readInteger(const char* name, int64_t value)
    {
        KX_IntegerValue record{};
        record.current = value;
        node(KX_OP_GET_INT, name, &record);
    }
    void writeInteger(const char* name, int64_t value, KX_Status status = KX_OK)
    {
        node(KX_OP_SET_INT, name, status == KX_OK ? &value : nullptr, status);
    }
    void memory(uint32_t operation, int64_t address, const std::vector<uint8_t>& bytes)
    {
        KX_CallEvent event{};
        event.operation = operation;
        event.finished = 1;
        event.address = address;
        event.length = int64_t(bytes.size());
        event.value = bytes.data();
        observed.take(event);
    }
    // "Width 1->2, 4096 00->01"; "?" for what was not read.
    QString told() const
    {
        QStringList words;
        for (const Change& change : observed.changes())
            words += (change.isRegister ? QString::number(change.address) : change.feature) + ' ' +
                     (change.from.isNull() ? "?" : change.from) + "->" + change.to;
        return words.join(", ");
    }

    // "Width 1, 4096 00"; "?" for what was not read before.
    QString doubted() const
    {
        QStringList words;
        for (const Change& change : observed.inDoubt())
            words += (change.isRegister ? QString::number(change.address) : change.feature) + ' ' +
                     (change.from.isNull() ? "?" : change.from);
        return words.join(", ");
    }

    ObservedChanges observed;
};

} // namespace

TEST_F(Changes, AreWritesOfAnotherValue)
{
    readInteger("Width", 640);
    writeInteger("Width", 320);
    readInteger("Height", 480);
    writeInteger("Height", 480);
    writeInteger("OffsetX", 0);
    EXPECT_EQ(told(), "Width 640->320, OffsetX ?->0");
}

TEST_F(Changes, AreNotReadsAndWhatFailed)
{
    readInteger("Width", 640);
    writeInteger("Width", 320, KX_E_GC_RANGE);
    readInteger("Width", 640);
    EXPECT_EQ(told(), "");
    writeInteger("Width", 160);
    EXPECT_EQ(told(), "Width 640->160");
    EXPECT_EQ(observed.seenFeatures(), std::set<QString>{"Width"});
}

TEST_F(Changes, FollowTheCamerasOwnValue)
{
    readInteger("Width", 640);
    writeInteger("Width", 321);
    readInteger("Width", 320); // what it made of that
    writeInteger("Width", 321);
    EXPECT_EQ(told(), "Width 640->321, Width 320->321");
}

TEST_F(Changes, TellValuesAsFeaturesFilesHaveThem)
{
    const bool isOn = true;
    KX_EnumValue entry{};
    entry.current = 7;
    const uint32_t written = 8;
    const float rate = 2.5f;
    KX_StringValue text{};
    std::strcpy(text.current, "");
    node(KX_OP_SET_BOOL, "A", &isOn);
    node(KX_OP_GET_ENUM, "B", &entry);
    node(KX_OP_SET_ENUM, "B", &written);
    node(KX_OP_SET_FLOAT, "C", &rate);
    node(KX_OP_GET_STRING, "D", &text);
    node(KX_OP_SET_STRING, "D", "门");
    EXPECT_EQ(told(), QString::fromUtf8("A ?->1, B 7->8, C ?->2.500000, D ->门"));
}

TEST_F(Changes, TellRegistersAsBytes)
{
    memory(KX_OP_READ_MEMORY, 4096, {0, 0, 0, 100});
    memory(KX_OP_WRITE_MEMORY, 4096, {0, 0, 0, 255});
    memory(KX_OP_READ_MEMORY, 4100, {1});
    EXPECT_EQ(told(), "4096 00000064->000000ff");
    EXPECT_EQ(observed.seenRegisters(), (std::set<int64_t>{4096, 4100}));
}

TEST_F(Changes, KnowTheCamera)
{
    EXPECT_EQ(observed.descriptionHash(), "");
    EXPECT_EQ(observed.firmware(), "");
    node(KX_OP_OPEN, nullptr, "abc");
    KX_StringValue firmware{};
    std::strcpy(firmware.current, "1.2.3");
    node(KX_OP_GET_STRING, "DeviceFirmwareVersion", &firmware);
    EXPECT_EQ(observed.descriptionHash(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(observed.firmware(), "1.2.3");
}

TEST_F(Changes, HaveNoDescriptionWhereTheCameraHasNone)
{
    node(KX_OP_OPEN, nullptr, "");
    EXPECT_EQ(observed.descriptionHash(), "");
}

TEST_F(Changes, AreInDoubtWhereTheLineFailedTheWrite)
{
    readInteger("Width", 1);
    writeInteger("Width", 2, KX_E_NO_ANSWER);
    writeInteger("Height", 2, KX_E_CONNECTION_LOST);
    writeInteger("Refused", 2, KX_E_GC_RANGE);
    writeInteger("Stopped", 2, KX_E_ABORTED);
    EXPECT_EQ(told(), "");
    EXPECT_EQ(doubted(), "Width 1, Height ?");

    readInteger("Width", 1);
    EXPECT_EQ(doubted(), "Height ?");
    writeInteger("Height", 2);
    EXPECT_EQ(doubted(), "");
    EXPECT_EQ(told(), "Height ?->2");
}
