// The options of all commands that set features.
#pragma once

#include "iefeatures/imports/ImportProcedure.h"

#include <string>

namespace CLI
{
class App;
}

namespace companion
{

class ImportOptions
{
public:
    void addSnapshot(CLI::App& app);
    void addVerify(CLI::App& app); // for commands that do not always verify
    void addUserSet(CLI::App& app);
    void addAudit(CLI::App& app);

    bool isVerified() const { return m_isVerified || !m_userSet.empty(); }
    void fill(ImportTask& task) const;

private:
    std::string m_snapshots;
    bool m_isVerified = false;
    std::string m_userSet;
    bool m_isForStartUp = false;
    bool m_isUnaudited = false;
};

} // namespace companion
