// Where the audit lines of a command go.
#pragma once

#include "iefeatures/imports/AuditLog.h"

#include <string>

namespace CLI
{
class App;
}

namespace companion
{

class AuditOptions
{
public:
    void addOptions(CLI::App& app);
    AuditRule rule() const;

private:
    bool isOff() const { return m_isUnaudited || m_file == "off"; }

    std::string m_file;
    bool m_isUnaudited = false;
    bool m_isRequired = false;
};

} // namespace companion
