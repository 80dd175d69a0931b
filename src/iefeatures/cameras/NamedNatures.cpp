#include "iefeatures/cameras/NamedNatures.h"

#include "iefeatures/cameras/NamePatterns.h"

namespace companion
{
namespace
{

struct Row
{
    const char* pattern;
    Nature::Kind kind;
    const char* reason;
};

const char* const kControl = "tells who controls the camera";
const char* const kUnit = "tells this unit from others";
const char* const kStream = "set by the program that streams from the camera";
const char* const kMessages = "set by the program that takes the camera's messages";
const char* const kHeartbeat = "set by the program that controls the camera";

constexpr auto kState = Nature::Kind::State;
constexpr auto kSession = Nature::Kind::Session;

// SFNC 2.x numbers of chapters differ from edition to edition, so chapters are named.
const Row kRows[] = {
    // SFNC, Transport Layer Control; GigE Vision, bootstrap register "Control Channel Privilege". Exports
    // hold
    // exclusive control, and files are full of it.
    {"GevCCP", kState, kControl},
    {"GevPrimaryApplication*", kState, kControl},
    // SFNC, Device Control; GigE Vision, bootstrap registers "Device MAC Address", "Serial Number"
    {"DeviceID", kState, kUnit},
    {"DeviceSerialNumber", kState, kUnit},
    {"DeviceMACAddress*", kState, kUnit},
    {"GevMACAddress*", kState, kUnit},
    {"GevDeviceMACAddress*", kState, kUnit},
    // SFNC, Transport Layer Control; GigE Vision, bootstrap registers "Stream Channel Port", "Packet Size",
    // "Packet Delay", "Destination Address", "Source Port"
    {"GevSCPHostPort", kSession, kStream},
    {"GevSCPInterfaceIndex", kSession, kStream},
    {"GevSCPSPacketSize", kSession, kStream},
    {"GevSCPSDoNotFragment", kSession, kStream},
    {"GevSCPSFireTestPacket", kSession, kStream},
    {"GevSCPD", kSession, kStream},
    {"GevSCDA", kSession, kStream},
    {"GevSCSP", kSession, kStream},
    // SFNC, Device Control, Stream Channel (the same for every transport)
    {"DeviceStreamChannelPacketSize", kSession, kStream},
    // SFNC, Transport Layer Control: what a program locks for as long as it streams
    {"TLParamsLocked", kSession, kStream},
    // GigE Vision, bootstrap registers "Message Channel Port", "Destination Address", "Transmission Timeout",
    // "Retry Count"
    {"GevMCPHostPort", kSession, kMessages},
    {"GevMCDA", kSession, kMessages},
    {"GevMCTT", kSession, kMessages},
    {"GevMCRC", kSession, kMessages},
    // GigE Vision, bootstrap registers "Heartbeat Timeout", "Pending Timeout"; SFNC, Device Control, Link
    {"GevHeartbeatTimeout", kSession, kHeartbeat},
    {"GevGVCPHeartbeatDisable", kSession, kHeartbeat},
    {"GevGVCPPendingAck", kSession, kHeartbeat},
    {"DeviceLinkHeartbeatTimeout", kSession, kHeartbeat},
    {"DeviceLinkHeartbeatMode", kSession, kHeartbeat},
};

struct Moved
{
    const char* pattern;
    const char* function;
};

// SFNC, Acquisition Control ("ExposureAuto") and Analog Control ("GainAuto", "BlackLevelAuto",
// "BalanceWhiteAuto"); the names in Abs and Raw are those of SFNC before 2.0.
const Moved kMoved[] = {
    {"ExposureTime", "ExposureAuto"},
    {"ExposureTimeAbs", "ExposureAuto"},
    {"ExposureTimeRaw", "ExposureAuto"},
    {"Gain", "GainAuto"},
    {"GainAbs", "GainAuto"},
    {"GainRaw", "GainAuto"},
    {"BlackLevel", "BlackLevelAuto"},
    {"BlackLevelAbs", "BlackLevelAuto"},
    {"BlackLevelRaw", "BlackLevelAuto"},
    {"BalanceRatio", "BalanceWhiteAuto"},
    {"BalanceRatioAbs", "BalanceWhiteAuto"},
    {"BalanceRatioRaw", "BalanceWhiteAuto"},
};

bool fits(const char* pattern, const QString& name)
{
    return NamePatterns({pattern}).match(name);
}

} // namespace

Nature natureOfName(const QString& feature)
{
    for (const Row& row : kRows)
        if (fits(row.pattern, feature))
            return {row.kind, row.reason};
    return {};
}

// GigE Vision, bootstrap registers: MAC address of the first interface at 0x0008, serial number at 0x00D8,
// control channel privilege at 0x0A00. GVCP has addresses of 32 bits; descriptions that serve several buses
// know others.
Nature natureOfGigEAddress(qint64 address)
{
    if (address < 0 || address > 0xFFFFFFFF)
        return {kState, "no GigE Vision camera has so high an address"};
    const auto isIn = [address](qint64 from, qint64 length) {
        return address >= from && address < from + length;
    };
    if (isIn(0x0008, 8) || isIn(0x00D8, 16))
        return {kState, kUnit};
    return isIn(0x0A00, 4) ? Nature{kState, kControl} : Nature();
}

QStringList automaticFunctionsOf(const QString& feature)
{
    QStringList functions;
    for (const Moved& moved : kMoved)
        if (fits(moved.pattern, feature))
            functions += moved.function;
    return functions;
}

bool isMovedByLock(const QString& feature, const QString& lock)
{
    static const NamePatterns peoples(
        {"*Auto*", "*Selector", "*Mode", "*Enable*", "*Limit*", "*Min", "*Max", "*Increment", "*Step"});
    static const QString ending = "Auto";
    const QString stem = lock.chopped(lock.endsWith(ending) ? ending.size() : 0);
    return lock.endsWith(ending) && !stem.isEmpty() && feature.contains(stem) && !peoples.match(feature);
}

const QStringList& changingByThemselves()
{
    // AcquisitionFrameCount and its like are settings, so "*Count" would be too much.
    static const QStringList patterns = {"*Temperature",
                                         "*TemperatureRaw",
                                         "*Timestamp",
                                         "*TimestampValue*",
                                         "*TimestampLatchValue*",
                                         "CounterValue*",
                                         "CounterStatus",
                                         "TimerValue",
                                         "TimerStatus",
                                         "EncoderValue*",
                                         "EncoderStatus",
                                         "*ErrorCount",
                                         "*ErrorCounter",
                                         "*OverflowCount",
                                         "*Uptime",
                                         "*UpTime",
                                         "DeviceRunTime",
                                         "DeviceOperatingTime",
                                         "LineStatus",
                                         "LineStatusAll",
                                         "PtpStatus",
                                         "PtpOffsetFromMaster"};
    return patterns;
}

QStringList sessionPatterns()
{
    QStringList patterns;
    for (const Row& row : kRows)
        if (row.kind == kSession)
            patterns += row.pattern;
    return patterns;
}

} // namespace companion
