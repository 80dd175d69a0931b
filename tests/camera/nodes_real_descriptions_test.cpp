// Descriptions of real cameras, from the folder that KX_DESCRIPTIONS names: every one loads, and reading
// every feature from a camera whose memory is all zeros neither crashes nor hangs nor ends in anything but a
// status that speaks of the feature.
#include "KXCameraControl/nodes/NodeTable.h"
#include "camera/FakePort.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace
{

std::string contents(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

KX_Status readFeature(KX_HANDLE handle, const kx::Node& node)
{
    const char* name = node.name.c_str();
    switch (node.kind) {
    case kx::NodeKind::Boolean: {
        bool value = false;
        return KX_CC_GetBoolValue(handle, name, &value);
    }
    case kx::NodeKind::Enumeration: {
        KX_EnumValue value;
        return KX_CC_GetEnumValue(handle, name, &value);
    }
    case kx::NodeKind::Float:
    case kx::NodeKind::FloatReg:
    case kx::NodeKind::SwissKnife:
    case kx::NodeKind::Converter: {
        KX_FloatValue value;
        return KX_CC_GetFloatValue(handle, name, &value);
    }
    case kx::NodeKind::String:
    case kx::NodeKind::StringReg: {
        KX_StringValue value;
        return KX_CC_GetStringValue(handle, name, &value);
    }
    default: {
        KX_IntegerValue value;
        return KX_CC_GetIntValueEx(handle, name, &value);
    }
    }
}

// Such a value stays in the host: it may be set, but no camera ever gets it.
bool standsInTheDescription(const kx::Node& node)
{
    const kx::Node* end = &node;
    while (const kx::Node* next = end->link(kx::Tag::pValue))
        end = next;
    return !end->find(kx::Tag::pPort);
}

bool speaksOfTheFeature(KX_Status status)
{
    return status == KX_OK || (status >= KX_E_GC_GENERIC && status <= KX_E_GC_ACCESS);
}

} // namespace

TEST(RealDescriptions, loadAndEveryFeatureAnswers)
{
    const char* folder = std::getenv("KX_DESCRIPTIONS");
    if (!folder) {
        std::cout << "SKIPPED: KX_DESCRIPTIONS names no folder" << std::endl;
        GTEST_SKIP();
    }
    unsigned files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".xml")
            continue;
        SCOPED_TRACE(entry.path().filename().string());
        const std::string text = contents(entry.path());
        kx::NodeTable table;
        std::string problem;
        ASSERT_TRUE(table.load(text, problem)) << problem;

        const auto start = std::chrono::steady_clock::now();
        tests::FakeCamera camera(text);
        ASSERT_EQ(camera.openStatus, KX_OK);
        std::map<KX_Status, unsigned> statuses;
        unsigned brokenFormulas = 0;
        for (const kx::Node& node : table.nodes()) {
            if (node.name.empty())
                continue;
            brokenFormulas += !node.from.problem.empty();
            KX_XML_AccessMode mode = KX_AM_UNDEFINED;
            EXPECT_EQ(KX_XML_GetNodeAccessMode(camera.handle, node.name.c_str(), &mode), KX_OK) << node.name;
            bool isEverWritable = false;
            EXPECT_EQ(KX_CC_IsEverWritable(camera.handle, node.name.c_str(), &isEverWritable), KX_OK);
            EXPECT_TRUE(isEverWritable || mode == KX_AM_READ_ONLY || mode < KX_AM_WRITE_ONLY ||
                        mode > KX_AM_READ_WRITE || standsInTheDescription(node))
                << node.name;
            const KX_Status status = readFeature(camera.handle, node);
            EXPECT_TRUE(speaksOfTheFeature(status)) << node.name << ": " << camera.lastError();
            ++statuses[status];
            if (status == KX_E_GC_RUNTIME && std::getenv("KX_VERBOSE"))
                std::cout << "    " << camera.lastError() << "\n";
        }
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        std::cout << entry.path().filename().string() << ": " << taken.count() << " s, "
                  << camera.device.requests.size() << " requests, " << brokenFormulas << " broken formulas,";
        for (const auto& [status, count] : statuses)
            std::cout << " " << std::hex << status << std::dec << " x" << count;
        std::cout << std::endl;
        EXPECT_GT(statuses[KX_OK], table.nodes().size() / 10);
        ++files;
    }
    EXPECT_GT(files, 0u);
}
