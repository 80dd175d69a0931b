// Who is on the line, over answers that a table gives.
#include "camera_line/Enumeration.h"
#include "camera_line/Presence.h"
#include "camera_line/RecordTexts.h"
#include "support/QtPrinting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

using camera_line::identityOf;
using camera_line::Presence;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

std::vector<KX_DeviceEntry> g_line; // what the camera library finds
KX_Status g_status = KX_OK;
std::vector<uint32_t> g_capacities; // of its calls

template <std::size_t Size>
void put(uint8_t (&field)[Size], const char* text)
{
    std::memcpy(field, text, std::min(Size, std::strlen(text)));
}

KX_DeviceInfo gige(const char* serial, uint32_t mac = 1)
{
    KX_DeviceInfo info{};
    info.transportType = KX_TRANSPORT_GIGE;
    put(info.special.gige.modelName, "GM");
    put(info.special.gige.serialNumber, serial);
    put(info.special.gige.userDefinedName, "Gate");
    info.special.gige.macHigh = 0x0011;
    info.special.gige.macLow = mac;
    info.special.gige.ipAddress = 0x7F000102;
    return info;
}

KX_DeviceInfo usb3(const char* serial)
{
    KX_DeviceInfo info{};
    info.transportType = KX_TRANSPORT_USB3;
    put(info.special.usb3.modelName, "UM");
    put(info.special.usb3.serialNumber, serial);
    put(info.special.usb3.userDefinedName, "Belt");
    return info;
}

KX_DeviceInfo cameraLink(const char* serial, const char* port = "P1")
{
    KX_DeviceInfo info{};
    info.transportType = KX_TRANSPORT_CAMERA_LINK;
    put(info.special.cameraLink.modelName, "CM");
    put(info.special.cameraLink.serialNumber, serial);
    put(info.special.cameraLink.portId, port);
    return info;
}

std::vector<int> idsOf(const Presence::Look& look)
{
    std::vector<int> ids;
    for (const Presence::Answer& answer : look.answers)
        ids.push_back(answer.isNew ? answer.id : -answer.id); // a known one is told by its sign
    return ids;
}

} // namespace

KX_Status KX_CC_EnumDevices(uint32_t transports, KX_DeviceEntry* entries, uint32_t capacity, uint32_t* count)
{
    EXPECT_EQ(transports, 5u);
    g_capacities.push_back(capacity);
    *count = static_cast<uint32_t>(g_line.size());
    std::copy_n(g_line.begin(), std::min<size_t>(capacity, g_line.size()), entries);
    return g_status;
}

TEST(CameraLine, AsksAgainUntilAllHaveRoom)
{
    g_line.assign(70, KX_DeviceEntry{});
    g_capacities.clear();
    std::vector<KX_DeviceEntry> entries;
    EXPECT_EQ(camera_line::enumerateCameras(5, entries), KX_OK);
    EXPECT_EQ(entries.size(), 70u);
    EXPECT_THAT(g_capacities, ElementsAre(64, 70));
}

TEST(CameraLine, GivesNoCameraOfAFailedSearch)
{
    g_line.assign(2, KX_DeviceEntry{});
    g_status = KX_E_NETWORK;
    std::vector<KX_DeviceEntry> entries(1);
    EXPECT_EQ(camera_line::enumerateCameras(5, entries), KX_E_NETWORK);
    EXPECT_THAT(entries, IsEmpty());
    g_status = KX_OK;
}

TEST(CameraLine, TellsWhatMakesTwoAnswersTheSameCamera)
{
    KX_DeviceInfo renamed = gige("1");
    put(renamed.special.gige.modelName, "New firmware");
    put(renamed.special.gige.userDefinedName, "Other");
    renamed.special.gige.ipAddress = 7;
    renamed.special.gige.interfaceAddress = 8;
    EXPECT_EQ(identityOf(gige("1")), identityOf(renamed));

    KX_DeviceInfo otherModel = usb3("1");
    put(otherModel.special.usb3.modelName, "XX");
    KX_DeviceInfo otherMacHigh = gige("1");
    otherMacHigh.special.gige.macHigh = 0x0012;
    EXPECT_NE(identityOf(usb3("1")), identityOf(otherModel));
    EXPECT_NE(identityOf(gige("1")), identityOf(gige("2")));
    EXPECT_NE(identityOf(gige("1")), identityOf(gige("1", 2)));
    EXPECT_NE(identityOf(gige("1")), identityOf(otherMacHigh));
    EXPECT_NE(identityOf(usb3("1")), identityOf(usb3("2")));
    EXPECT_NE(identityOf(cameraLink("1", "P1")), identityOf(cameraLink("1", "P2")));

    KX_DeviceInfo unknown{};
    unknown.transportType = 2;
    EXPECT_NE(identityOf(unknown), identityOf(KX_DeviceInfo{}));
}

TEST(CameraLine, TellsUsbCamerasByTheirGuidAndElseByWhereTheyHang)
{
    KX_DeviceInfo one = usb3("1");
    KX_DeviceInfo other = usb3("1");
    put(one.special.usb3.location, "2-1");
    put(other.special.usb3.location, "2-2");
    EXPECT_NE(identityOf(one), identityOf(other));
    put(one.special.usb3.guid, "ABCD00000001");
    put(other.special.usb3.guid, "ABCD00000001");
    EXPECT_EQ(identityOf(one), identityOf(other)) << "plugged in elsewhere";
    put(other.special.usb3.guid, "ABCD00000002");
    EXPECT_NE(identityOf(one), identityOf(other));
}

TEST(CameraLine, TellsCamerasBehindProducersByProducerInterfaceAndDevice)
{
    const KX_DeviceInfo one = cameraLink("1");
    for (auto field : {&KX_CameraLinkDeviceInfo::producerId, &KX_CameraLinkDeviceInfo::interfaceId,
                       &KX_CameraLinkDeviceInfo::deviceId}) {
        KX_DeviceInfo other = one;
        put(other.special.cameraLink.*field, "X");
        EXPECT_NE(identityOf(one), identityOf(other));
    }
}

TEST(CameraLine, DoesNotReadBehindAFieldWithoutAZeroByte)
{
    KX_DeviceInfo one = gige("1234567890123456");
    KX_DeviceInfo other = one;
    put(other.special.gige.userDefinedName, "behind it");
    EXPECT_EQ(identityOf(one), identityOf(other));
    EXPECT_EQ(camera_line::serialField(one).text(), QString("1234567890123456"));
    EXPECT_EQ(camera_line::serialField(one).content(), QByteArray("1234567890123456"));
}

TEST(CameraLine, KeepsIdsForCamerasThatComeBack)
{
    Presence presence;
    EXPECT_THAT(idsOf(presence.look({gige("1"), gige("2")})), ElementsAre(1, 2));
    EXPECT_THAT(presence.look({gige("2")}).gone, IsEmpty()); // one lost answer
    EXPECT_THAT(presence.look({gige("2")}).gone, ElementsAre(1));
    EXPECT_THAT(presence.look({gige("2")}).gone, IsEmpty()); // told once
    EXPECT_THAT(idsOf(presence.look({gige("3"), gige("1"), gige("2")})), ElementsAre(3, 1, -2));
}

TEST(CameraLine, CountsMissesInARowOnly)
{
    Presence presence;
    for (int i = 0; i < 3; ++i) {
        EXPECT_THAT(idsOf(presence.look({gige("1")})), ElementsAre(i == 0 ? 1 : -1));
        EXPECT_THAT(presence.look({}).gone, IsEmpty());
    }
    EXPECT_THAT(presence.look({}).gone, ElementsAre(1));
}

TEST(CameraLine, IsLeftAtOnceWhenNobodyIsLookedFor)
{
    Presence presence;
    presence.look({gige("1"), gige("2")});
    EXPECT_THAT(presence.look({}, 1).gone, ElementsAre(1, 2));
}

TEST(CameraLine, TellsCamerasApartThatAreAlike)
{
    Presence presence;
    EXPECT_THAT(idsOf(presence.look({usb3("1"), usb3("1"), usb3("2")})), ElementsAre(1, 2, 3));
    EXPECT_THAT(idsOf(presence.look({usb3("1"), usb3("2")})), ElementsAre(-1, -3));
    EXPECT_THAT(presence.look({usb3("1"), usb3("2")}).gone, ElementsAre(2));
}

TEST(CameraLine, HasAWordForEachTransport)
{
    EXPECT_EQ(camera_line::transportWord(KX_TRANSPORT_GIGE), QString("GigE"));
    EXPECT_EQ(camera_line::transportWord(KX_TRANSPORT_USB3), QString("U3V"));
    EXPECT_EQ(camera_line::transportWord(KX_TRANSPORT_CAMERA_LINK), QString("CL"));
    for (const uint32_t other : {0u, 2u, 3u, 5u, 9u, 0xFFFFFFFFu})
        EXPECT_EQ(camera_line::transportWord(other), QString(""));
}

TEST(CameraLine, CallsALayerByTheNameThatItsProducerHas)
{
    KX_DeviceInfo info{};
    info.transportType = KX_TRANSPORT_CAMERA_LINK;
    EXPECT_EQ(camera_line::layerWord(info), QString("CL"));
    std::memcpy(info.special.cameraLink.layerName, "CLHS", 5);
    EXPECT_EQ(camera_line::layerWord(info), QString("CLHS"));
    info.transportType = KX_TRANSPORT_GIGE;
    EXPECT_EQ(camera_line::layerWord(info), QString("GigE")) << "that field is another one's";
}

TEST(CameraLine, ReadsTheTextsOfEachTransport)
{
    struct Row
    {
        KX_DeviceInfo info;
        QStringList texts; // model, serial, user name, port, MAC, address
    };
    KX_DeviceInfo unknown = gige("1");
    unknown.transportType = 2;
    const Row rows[] = {{gige("1", 0x22334455), {"GM", "1", "Gate", "", "00:11:22:33:44:55", "127.0.1.2"}},
                        {usb3("2"), {"UM", "2", "Belt", "", "", ""}},
                        {cameraLink("3"), {"CM", "3", "", "P1", "", "P1"}},
                        {unknown, {"", "", "", "", "", ""}}};
    for (const auto& [info, texts] : rows)
        EXPECT_EQ((QStringList{camera_line::modelField(info).text(), camera_line::serialField(info).text(),
                               camera_line::userNameField(info).text(), camera_line::portIdField(info).text(),
                               camera_line::macText(info), camera_line::addressText(info)}),
                  texts);
}
