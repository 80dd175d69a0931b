// The same descriptions over the same registers, read by another GenICam engine: what both can read, both
// read alike. Real descriptions come from the folder that KX_DESCRIPTIONS names.
#include "KXCameraControl/nodes/NodeValues.h"
#include "camera/EveryNodeKind.h"
#include "camera_emulator/BuiltIn.h"

#include <arv.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace
{

// Registers of arbitrary but fixed content; small numbers, so that selectors and divisors make sense.
uint8_t byteAt(uint64_t address)
{
    return address % 4 == 3 ? static_cast<uint8_t>((address * 2654435761U >> 20) % 5) : 0;
}

struct OtherDevice
{
    ArvDevice parent;
};
struct OtherDeviceClass
{
    ArvDeviceClass parent;
};

GType other_device_get_type(void);
G_DEFINE_TYPE(OtherDevice, other_device, ARV_TYPE_DEVICE)

gboolean readMemory(ArvDevice*, guint64 address, guint32 size, void* buffer, GError**)
{
    for (guint32 i = 0; i < size; ++i)
        static_cast<uint8_t*>(buffer)[i] = byteAt(address + i);
    return TRUE;
}

void other_device_init(OtherDevice*) {}

void other_device_class_init(OtherDeviceClass* self)
{
    self->parent.read_memory = readMemory;
}

class RandomPort : public tests::FakePort
{
public:
    explicit RandomPort(tests::FakeDevice& device) : FakePort(device) {}
    KX_Status readMemory(uint64_t address, void* data, size_t size) override
    {
        if (address == tests::FakeDevice::descriptionAddress)
            return FakePort::readMemory(address, data, size);
        return ::readMemory(nullptr, address, static_cast<guint32>(size), data, nullptr) ? KX_OK
                                                                                         : KX_E_DEVICE;
    }
    KX_Status readRegister(uint64_t address, uint32_t& value) override
    {
        value = 0;
        for (int i = 0; i < 4; ++i)
            value = value << 8 | byteAt(address + i);
        return KX_OK;
    }
};

class Comparison
{
public:
    explicit Comparison(const std::string& xml)
    {
        std::string problem;
        EXPECT_TRUE(m_table.load(xml, problem)) << problem;
        m_device.offer(xml);
        kx::setPortFactory([this](const KX_DeviceInfo&) { return std::make_unique<RandomPort>(m_device); });
        KX_DeviceInfo info{};
        info.layout = KX_DEVICE_INFO_LAYOUT;
        KX_CC_CreateHandle(&m_handle, &info);
        EXPECT_EQ(KX_CC_OpenDevice(m_handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
        m_other = static_cast<ArvDevice*>(g_object_new(other_device_get_type(), nullptr));
        m_genicam = arv_gc_new(m_other, xml.data(), xml.size());
    }
    ~Comparison()
    {
        KX_CC_DestroyHandle(m_handle);
        kx::setPortFactory(nullptr);
        g_object_unref(m_genicam);
        g_object_unref(m_other);
    }

    void run()
    {
        for (const kx::Node& node : m_table.nodes()) {
            // Circles would take the other engine down.
            if (node.anyFault() != kx::FaultNone || m_table.find(node.name) != &node)
                continue;
            ArvGcNode* const other = arv_gc_get_node(m_genicam, node.name.c_str());
            if (other)
                compare(node, other);
        }
    }

    unsigned compared = 0;
    std::vector<std::string> differences;

private:
    // The other engine truncates where a real number becomes an integer, and takes no functions in integer
    // formulas: those read as zero there.
    static bool isKnownFault(const kx::Node& node, double mine, double theirs)
    {
        const kx::Node* behind = node.link(kx::Tag::pValue);
        if (behind && kx::isFloatKind(behind->kind) && std::fabs(mine - theirs) <= 1)
            return true;
        const kx::Property* formula = node.find(kx::Tag::Formula);
        return formula && formula->text.find("ABS(") != std::string::npos && theirs == 0;
    }

    void compare(const kx::Node& node, ArvGcNode* other)
    {
        const char* const name = node.name.c_str();
        KX_IntegerValue integer;
        KX_FloatValue real;
        KX_EnumValue entry;
        KX_StringValue text;
        bool flag = false;
        GError* failure = nullptr;
        if (KX_CC_GetIntValueEx(m_handle, name, &integer) == KX_OK)
            check(node, static_cast<double>(integer.current),
                  static_cast<double>(arv_gc_integer_get_value(ARV_GC_INTEGER(other), &failure)), failure);
        else if (KX_CC_GetFloatValue(m_handle, name, &real) == KX_OK)
            check(node, real.current,
                  static_cast<float>(arv_gc_float_get_value(ARV_GC_FLOAT(other), &failure)), failure);
        else if (KX_CC_GetEnumValue(m_handle, name, &entry) == KX_OK)
            check(
                node, entry.current,
                static_cast<uint32_t>(arv_gc_enumeration_get_int_value(ARV_GC_ENUMERATION(other), &failure)),
                failure);
        else if (KX_CC_GetBoolValue(m_handle, name, &flag) == KX_OK)
            check(node, flag, arv_gc_boolean_get_value(ARV_GC_BOOLEAN(other), &failure), failure);
        else if (KX_CC_GetStringValue(m_handle, name, &text) == KX_OK)
            checkText(name, text.current, arv_gc_string_get_value(ARV_GC_STRING(other), &failure), failure);
        g_clear_error(&failure);
    }

    void check(const kx::Node& node, double mine, double theirs, const GError* failure)
    {
        if (failure)
            return; // what only we can read
        ++compared;
        if (std::fabs(mine - theirs) > 1e-6 * std::fabs(theirs) && !isKnownFault(node, mine, theirs))
            differences.push_back(node.name + ": " + std::to_string(mine) + " and " + std::to_string(theirs));
    }

    void checkText(const char* name, const std::string& mine, const char* theirs, const GError* failure)
    {
        if (failure || !theirs)
            return;
        ++compared;
        if (mine != std::string(theirs).substr(0, 255))
            differences.push_back(name + std::string(": \"") + mine + "\" and \"" + theirs + "\"");
    }

    kx::NodeTable m_table;
    tests::FakeDevice m_device;
    KX_HANDLE m_handle = nullptr;
    ArvDevice* m_other = nullptr;
    ArvGc* m_genicam = nullptr;
};

TEST(OtherEngine, readsTheEmulatorsDescriptionAlike)
{
    Comparison comparison{std::string(emu::builtInDescription())};
    comparison.run();
    EXPECT_EQ(comparison.differences, std::vector<std::string>());
    EXPECT_GT(comparison.compared, 150u);
}

TEST(OtherEngine, readsRealDescriptionsAlike)
{
    const char* folder = std::getenv("KX_DESCRIPTIONS");
    if (!folder) {
        std::cout << "SKIPPED the real descriptions: KX_DESCRIPTIONS names no folder" << std::endl;
        return;
    }
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        if (file.path().extension() != ".xml")
            continue;
        std::ifstream stream(file.path(), std::ios::binary);
        Comparison comparison{std::string(std::istreambuf_iterator<char>(stream), {})};
        comparison.run();
        std::cout << file.path().filename().string() << ": " << comparison.compared << " values" << std::endl;
        EXPECT_EQ(comparison.differences, std::vector<std::string>()) << file.path();
    }
}

} // namespace
