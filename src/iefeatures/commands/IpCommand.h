// iefeatures ip: what a camera is called, and how it comes by its address.
#pragma once

#include "iefeatures/commands/AuditOptions.h"
#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/network/NetworkTask.h"

#include <optional>
#include <string>

namespace companion
{

class IpCommand : public Command
{
public:
    const char* name() const override { return "ip"; }
    const char* summary() const override
    {
        return "Give a camera a name, an address, DHCP, link-local addresses";
    }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    int readTask(Console& console, NetworkTask& task) const;
    int object(Console& console, const std::vector<ListedCamera>& cameras, const NetworkTask& task) const;
    int ask(World& world, const std::vector<ListedCamera>& cameras, const NetworkTask& task) const;
    int write(World& world, const std::vector<ListedCamera>& cameras, const NetworkTask& task) const;

    CameraSelection m_selection;
    SearchOptions m_search;
    std::string m_forced; // empty: not given, as all of these
    std::string m_persistent;
    std::string m_dhcp;
    std::string m_lla;
    std::optional<std::string> m_userName; // may be empty: takes the name away
    bool m_isAgreed = false;
    AuditOptions m_audit;
    bool m_json = false;
};

} // namespace companion
