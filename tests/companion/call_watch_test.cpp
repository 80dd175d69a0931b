// Which calls an interrupt still lets through, and what is counted of the others.
#include "companion/CompanionFixture.h"
#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/running/CallWatch.h"

using companion::CallWatch;
using companion::CameraConnection;

namespace
{

constexpr int64_t kGain = 77824; // three registers

class Watched : public tests::CompanionTest
{
protected:
    void watch(CallWatch::Refusal refusal)
    {
        addCamera("S1");
        std::vector<KX_DeviceEntry> entries;
        ASSERT_EQ(companion::enumerateCameras(entries), KX_OK);
        m_cameras = companion::camerasFrom(entries);
        m_expected.blocks = {{kGain, "Gain"}, {kGain + 4, "Gain"}};
        for (const char* feature : {"Height", "Gain", "Width"})
            m_expected.name(feature, {});
        m_watch = std::make_unique<CallWatch>(
            m_cameras, [this] { return isInterrupted; }, refusal,
            [this](const companion::ListedCamera&) { return &m_expected; });
        m_line =
            std::make_unique<CameraConnection>(m_cameras.front().device.stDeviceInfo, KX_ACCESS_EXCLUSIVE);
        ASSERT_EQ(m_line->status(), KX_OK);
    }

    KX_Status read(const char* name) const
    {
        KX_IntegerValue value{};
        return KX_CC_GetIntValueEx(m_line->handle(), name, &value);
    }
    KX_Status write(const char* name, int64_t value) const
    {
        return KX_CC_SetIntValueEx(m_line->handle(), name, value);
    }
    KX_Status readRegister(int64_t address) const
    {
        uint32_t word = 0;
        return KX_CC_ReadMemory(m_line->handle(), &word, address, sizeof word);
    }

    int features() const { return m_watch->tally(m_cameras.front().device.nDeviceID).features; }

    bool isInterrupted = false;

private:
    std::vector<companion::ListedCamera> m_cameras;
    companion::NamedFeatures m_expected;
    std::unique_ptr<CallWatch> m_watch;
    std::unique_ptr<CameraConnection> m_line;
};

} // namespace

TEST_F(Watched, FeaturesThatWereExpectedCountOnce)
{
    watch(CallWatch::Refusal::AtOnce);
    EXPECT_EQ(features(), 0);
    for (int cycle = 0; cycle < 2; ++cycle) {
        EXPECT_EQ(read("Height"), KX_OK);
        EXPECT_EQ(readRegister(kGain), KX_OK);
        EXPECT_EQ(readRegister(kGain + 4), KX_OK); // of the same block
        EXPECT_EQ(read("OffsetX"), KX_OK);         // not expected
    }
    EXPECT_EQ(features(), 2);
}

TEST_F(Watched, AFeatureInHandIsEnded)
{
    watch(CallWatch::Refusal::BehindFeature);
    ASSERT_EQ(read("Height"), KX_OK);
    isInterrupted = true;
    EXPECT_EQ(write("Height", 16), KX_OK);
    EXPECT_EQ(read("Width"), KX_E_ABORTED);
    EXPECT_EQ(write("Height", 32), KX_E_ABORTED); // it is over now
}

TEST_F(Watched, ARegisterBlockInHandIsEnded)
{
    watch(CallWatch::Refusal::BehindFeature);
    ASSERT_EQ(readRegister(kGain), KX_OK);
    isInterrupted = true;
    EXPECT_EQ(readRegister(kGain + 4), KX_OK);
    EXPECT_EQ(readRegister(kGain + 8), KX_E_ABORTED); // of no block
    EXPECT_EQ(readRegister(kGain), KX_E_ABORTED);
}

TEST_F(Watched, NothingMoreIsReadForAFile)
{
    watch(CallWatch::Refusal::AtOnce);
    ASSERT_EQ(read("Height"), KX_OK);
    isInterrupted = true;
    EXPECT_EQ(read("Height"), KX_E_ABORTED);
}
