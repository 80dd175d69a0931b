// Cameras whose settings jobs make while something goes wrong, and what must be true of it afterwards.
#pragma once

#include "companion/LineCompanion.h"
#include "companion/SmallDescription.h"
#include "companion/Sweep.h"
#include "companion/Told.h"

#include "gvcp/Gvcp.h"

namespace tests
{

class SweptSettings : public LineOfCameras
{
protected:
    using Values = std::map<std::string, emu::NodeValue>;

    // Numbers that a limit ties together, an enumeration, a switch, a text, a list behind a selector, a
    // table.
    static std::string description(const std::string& moreNodes = {})
    {
        std::string root;
        std::string nodes = moreNodes;
        unsigned address = 0x10100;
        for (const char* const name : kNumbers) {
            char place[16];
            std::snprintf(place, sizeof place, "0x%X", address);
            address += 4;
            root += std::string("<pFeature>") + name + "</pFeature>";
            nodes += std::string("<Integer Name=\"") + name + "\"><Streamable>Yes</Streamable><pValue>" +
                     name + "Reg</pValue>" + (name == std::string("OffsetX") ? "<pMax>Width</pMax>" : "") +
                     "</Integer>" + wordRegister(name + std::string("Reg"), place);
        }
        root += "<pFeature>Mode</pFeature><pFeature>Slot</pFeature><pFeature>Level</pFeature>"
                "<pFeature>Flip</pFeature><pFeature>Label</pFeature>";
        nodes +=
            "<Enumeration Name=\"Mode\"><Streamable>Yes</Streamable>"
            "<EnumEntry Name=\"Slow\"><Value>0</Value></EnumEntry>"
            "<EnumEntry Name=\"Fast\"><Value>1</Value></EnumEntry><pValue>ModeReg</pValue></Enumeration>" +
            wordRegister("ModeReg", "0x10180") +
            "<Integer Name=\"Slot\"><Streamable>Yes</Streamable><pValue>SlotReg</pValue><Min>0</Min>"
            "<Max>3</Max><pSelected>Level</pSelected></Integer>" +
            wordRegister("SlotReg", "0x10184") +
            "<Integer Name=\"Level\"><Streamable>Yes</Streamable><pValue>LevelReg</pValue></Integer>"
            "<IntReg Name=\"LevelReg\"><Address>0x10190</Address><pIndex Offset=\"4\">Slot</pIndex>"
            "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign>"
            "<Endianess>BigEndian</Endianess></IntReg>"
            "<Boolean Name=\"Flip\"><Streamable>Yes</Streamable><pValue>FlipReg</pValue></Boolean>" +
            wordRegister("FlipReg", "0x10188") +
            "<StringReg Name=\"Label\"><Streamable>Yes</Streamable><Address>0x101B0</Address>"
            "<Length>16</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>";
        return smallDescription(root, nodes);
    }

    static void set(emu::Shell& camera, int base)
    {
        Json nodes{{"Mode", base % 2}, {"Flip", base / 4 != 0}, {"Label", "set to " + std::to_string(base)}};
        int value = base * 10;
        for (const char* const name : kNumbers)
            nodes[name] = value--;
        EXPECT_EQ(camera.change(Json{{"nodes", nodes}}.dump()), std::vector<std::string>());
        camera.poke(kLevelOfFirstSlot, {0, 0, 0, static_cast<uint8_t>(base)});
    }

    // By the names under which jobs tell of them.
    static Values valuesOf(const emu::Shell& camera)
    {
        Values found;
        for (const char* const name : kNumbers)
            found[name] = camera.node(name).value();
        for (const char* const name : {"Mode", "Flip", "Label"})
            found[name] = camera.node(name).value();
        const auto word = [&](uint32_t address) {
            return static_cast<int64_t>(gvcp::get32(camera.peek(address, 4).data()));
        };
        found["Level"] = word(kLevelOfFirstSlot);
        if (dynamic_cast<const emu::EmulatedCamera*>(&camera) == nullptr)
            return found; // what follows is GigE Vision's
        const emu::Bytes name = camera.peek(gvcp::RegUserName, 16);
        found["DeviceUserID"] = std::string(name.begin(), name.end());
        found["GevPersistentIPAddress"] = word(gvcp::RegPersistentAddress);
        found["GevPersistentSubnetMask"] = word(gvcp::RegPersistentMask);
        found["GevPersistentDefaultGateway"] = word(gvcp::RegPersistentGateway);
        found["GevCurrentIPAddress"] = word(gvcp::RegCurrentAddress);
        const int64_t ways = word(gvcp::RegIpCurrent);
        found["GevCurrentIPConfigurationPersistentIP"] = ways & gvcp::kIpPersistent;
        found["GevCurrentIPConfigurationDHCP"] = ways & gvcp::kIpDhcp;
        found["GevCurrentIPConfigurationLLA"] = ways & gvcp::kIpLinkLocal;
        return found;
    }

    QByteArray auditLog() const
    {
        QFile log(QString::fromStdString(path("user-data/Audit/iefeatures.jsonl")));
        return log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
    }

    // What follows is held against what is there now.
    void begin(const emu::Shell& camera)
    {
        m_valuesBefore = valuesOf(camera);
        m_auditBefore = auditLog().size();
    }

    // The features whose value in the camera is not what it was before.
    Names changedIn(const emu::Shell& camera) const
    {
        Names names;
        for (const auto& [name, value] : valuesOf(camera))
            if (!(value == m_valuesBefore.at(name)))
                names.insert(name);
        return names;
    }

    // Of what is told of settings: it is what has become of them, in the audit log too.
    std::vector<std::string> tellingObjections(const Result& run, const emu::Shell& camera) const
    {
        const Names done = changedIn(camera);
        const Told told = toldBy(run);
        std::vector<std::string> found;
        if (!told.isAnything && !done.empty())
            return {"it has changed things without a word"};
        for (const std::string& name : done)
            if (told.changed.count(name) + told.inDoubt.count(name) == 0)
                found.push_back(name + " was changed, and is not told");
        // What a camera has forgotten cannot be known without it, or is not as the file says.
        const bool isSilent = run.code == 1;
        for (const std::string& name : told.changed)
            if (done.count(name) + told.notApplied.count(name) == 0 && !isSilent)
                found.push_back(name + " was not changed, and is told");
        Told audited = auditedBy(auditLog().mid(m_auditBefore));
        if (audited.changed != told.changed)
            found.push_back("the audit log tells other changes: " +
                            ::testing::PrintToString(audited.changed));
        if (audited.inDoubt != told.inDoubt)
            found.push_back("the audit log doubts other changes: " +
                            ::testing::PrintToString(audited.inDoubt));
        if (run.code == 0 && !told.inDoubt.empty())
            found.push_back("set, and in doubt");
        for (const Json& object : objects(run))
            if (object["kind"] == "result" && object["result"] == "incomplete" &&
                object["not_applied"].empty())
                found.push_back("incomplete, and nothing is named");
        return found;
    }

    // Of an export over an older file, "old".
    static std::vector<std::string> exportObjections(const Result& run, const QByteArray& now,
                                                     const QByteArray& right)
    {
        std::vector<std::string> found;
        if (run.code == 0 && now != right)
            found.push_back("a file that is not right was called good");
        // What could not be read is left out, and that is told.
        if (run.code == 4)
            for (const QByteArray& line : now.split('\n'))
                if (!right.contains(line))
                    found.push_back("wrong: " + line.toStdString());
        if (run.code != 0 && run.code != 4 && now != right && now != "old")
            found.push_back("a part of a file was left");
        if (run.code != 0 && lastObject(run, "export").is_null() && run.err.empty())
            found.push_back("nothing was said");
        return found;
    }

private:
    static constexpr uint32_t kLevelOfFirstSlot = 0x10190;
    static constexpr const char* kNumbers[] = {"Width", "Height", "OffsetX", "OffsetY", "Delay", "Repeat"};

    Values m_valuesBefore;
    int m_auditBefore = 0;
};

} // namespace tests
