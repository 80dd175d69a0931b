// A camera with the description that has every kind of node.
#pragma once

#include "camera/FakePort.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace tests
{

inline std::string testData(const std::string& name)
{
    std::ifstream file(std::string(IE_TEST_DATA) + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class EveryNodeKind : public testing::Test
{
protected:
    explicit EveryNodeKind(uint32_t mode = KX_ACCESS_EXCLUSIVE)
        : camera(testData("every_node_kind.xml"), mode)
    {
        EXPECT_EQ(camera.openStatus, KX_OK);
        camera.device.requests.clear();
    }

    // A record whose status says what happened; the values are only good with KX_OK.
    struct Integer : KX_IntegerValue
    {
        KX_Status status;
    };
    Integer integer(const char* name)
    {
        Integer result{};
        result.status = KX_CC_GetIntValueEx(camera.handle, name, &result);
        return result;
    }
    // The current value; a failure shows as its status.
    int64_t value(const char* name)
    {
        const Integer result = integer(name);
        return result.status == KX_OK ? result.current : -static_cast<int64_t>(result.status);
    }
    KX_Status statusOf(const char* name) { return integer(name).status; }

    struct Float : KX_FloatValue
    {
        KX_Status status;
    };
    Float real(const char* name)
    {
        Float result{};
        result.status = KX_CC_GetFloatValue(camera.handle, name, &result);
        return result;
    }

    std::string text(const char* name)
    {
        KX_StringValue result{};
        const KX_Status status = KX_CC_GetStringValue(camera.handle, name, &result);
        return status == KX_OK ? result.current : "status " + std::to_string(status);
    }

    KX_XML_AccessMode mode(const char* name)
    {
        KX_XML_AccessMode result = KX_AM_UNDEFINED;
        EXPECT_EQ(KX_XML_GetNodeAccessMode(camera.handle, name, &result), KX_OK) << name;
        return result;
    }

    KX_Status setInteger(const char* name, int64_t number)
    {
        return KX_CC_SetIntValueEx(camera.handle, name, number);
    }
    KX_Status setReal(const char* name, float number)
    {
        return KX_CC_SetFloatValue(camera.handle, name, number);
    }

    std::vector<std::string> takeRequests() { return std::exchange(device().requests, {}); }
    FakeDevice& device() { return camera.device; }

    FakeCamera camera;
};

} // namespace tests
