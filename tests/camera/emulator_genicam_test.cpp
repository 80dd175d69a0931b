// A GigE Vision host that was written elsewhere opens the emulated camera and reads its features. It is
// addressed directly: nothing is broadcast.
#include "camera/EmulatorFixture.h"

#include <arv.h>

namespace
{

class EmulatorGenicam : public EmulatorFixture
{
protected:
    EmulatorGenicam()
    {
        GError* error = nullptr;
        GInetAddress* interface = g_inet_address_new_from_string("127.0.0.1");
        GInetAddress* address = g_inet_address_new_from_string(camera.config().address.c_str());
        device = arv_gv_device_new(interface, address, &error);
        EXPECT_EQ(error, nullptr) << error->message;
        g_object_unref(interface);
        g_object_unref(address);
    }
    ~EmulatorGenicam() override { g_object_unref(device); }

    ArvDevice* device = nullptr;
};

} // namespace

TEST_F(EmulatorGenicam, takesControlAndReadsFeaturesOfEveryKind)
{
    EXPECT_TRUE(camera.isControlled());
    EXPECT_STREQ(arv_device_get_string_feature_value(device, "DeviceFirmwareVersion", nullptr), "1.2.3");
    EXPECT_STREQ(arv_device_get_string_feature_value(device, "DeviceLocation", nullptr), "Line 4");
    EXPECT_STREQ(arv_device_get_string_feature_value(device, "PixelFormat", nullptr), "Mono8");
    EXPECT_TRUE(arv_device_get_boolean_feature_value(device, "ReverseX", nullptr));
    EXPECT_FALSE(arv_device_get_boolean_feature_value(device, "ReverseY", nullptr));
    const std::pair<const char*, gint64> integers[] = {{"Width", 640},
                                                       {"WidthMax", 1280},
                                                       {"PayloadSize", 307200},
                                                       {"AcquisitionFrameCount", 10},
                                                       {"ImageBitDepth", 12},
                                                       {"StatusPower", 1},
                                                       {"StatusLevel", 200},
                                                       {"LittleEndianLevel", 171},
                                                       {"OffsetCorrection", -3},
                                                       {"LineFilter", 50},
                                                       {"MatrixValue", 2},
                                                       {"IndirectLevel", 55},
                                                       {"LineOverlap", 77},
                                                       {"NestedLevel", 1},
                                                       {"ExposureTimeRaw", 70000},
                                                       {"GevVersionMajor", 1}};
    for (const auto& [name, value] : integers)
        EXPECT_EQ(arv_device_get_integer_feature_value(device, name, nullptr), value) << name;
    const std::pair<const char*, double> floats[] = {{"AcquisitionFrameRate", 25},
                                                     {"ResultingFrameRate", 25},
                                                     {"ExposureTime", 5000},
                                                     {"Gain", 10},
                                                     {"BlackLevel", 1},
                                                     {"Gamma", 0.45},
                                                     {"BoardTemperature", 40.5},
                                                     {"SensorTemperature", 38.5}};
    for (const auto& [name, value] : floats)
        EXPECT_DOUBLE_EQ(arv_device_get_float_feature_value(device, name, nullptr), value) << name;
}

TEST_F(EmulatorGenicam, boundsDependOnOtherFeatures)
{
    gint64 min = 0;
    gint64 max = 0;
    arv_device_get_integer_feature_bounds(device, "Width", &min, &max, nullptr);
    EXPECT_EQ(min, 16);
    EXPECT_EQ(max, 960);
    arv_device_set_integer_feature_value(device, "OffsetX", 640, nullptr);
    arv_device_get_integer_feature_bounds(device, "Width", &min, &max, nullptr);
    EXPECT_EQ(max, 640);
    EXPECT_EQ(camera.node("OffsetX"), emu::NodeValue(int64_t(640)));
}

TEST_F(EmulatorGenicam, selectorsMoveTheRegister)
{
    arv_device_set_string_feature_value(device, "GainSelector", "Blue", nullptr);
    EXPECT_EQ(arv_device_get_integer_feature_value(device, "GainRaw", nullptr), 90);
    arv_device_set_integer_feature_value(device, "GainRaw", 91, nullptr);
    EXPECT_EQ(camera.peek(0x13000, 12), (gvcp::Bytes{0, 0, 0, 100, 0, 0, 0, 120, 0, 0, 0, 91}));
}

TEST_F(EmulatorGenicam, modesLockAndHide)
{
    ArvGc* genicam = arv_device_get_genicam(device);
    const auto feature = [&](const char* name) {
        return ARV_GC_FEATURE_NODE(arv_gc_get_node(genicam, name));
    };
    EXPECT_FALSE(arv_gc_feature_node_is_locked(feature("Gain"), nullptr));
    EXPECT_FALSE(arv_gc_feature_node_is_locked(feature("Width"), nullptr));
    EXPECT_FALSE(arv_gc_feature_node_is_available(feature("TriggerDelay"), nullptr));
    EXPECT_FALSE(arv_gc_feature_node_is_implemented(feature("AutofocusPosition"), nullptr));
    EXPECT_EQ(camera.setNode("GainAuto", std::string("Continuous")), "");
    EXPECT_EQ(camera.setNode("TLParamsLocked", int64_t(1)), "");
    camera.pokeWord(0x12030, 1); // TriggerMode of FrameStart
    EXPECT_TRUE(arv_gc_feature_node_is_locked(feature("Gain"), nullptr));
    EXPECT_TRUE(arv_gc_feature_node_is_locked(feature("Width"), nullptr));
    EXPECT_TRUE(arv_gc_feature_node_is_available(feature("TriggerDelay"), nullptr));
}
