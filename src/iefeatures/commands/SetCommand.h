// iefeatures set and iefeatures run: single features of cameras set, commands of cameras executed.
#pragma once

#include "iefeatures/commands/AuditOptions.h"
#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/imports/FeatureWrites.h"

#include <string>
#include <vector>

namespace companion
{

// What both have in common.
class WriteCommand : public Command
{
public:
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

protected:
    virtual std::vector<Assignment> assignments() const = 0;
    virtual void addWords(CLI::App& app) = 0;

private:
    int write(Console& console, const std::vector<ListedCamera>& cameras) const;

    CameraSelection m_selection;
    SearchOptions m_search;
    AuditOptions m_audit;
    bool m_json = false;
};

class SetCommand : public WriteCommand
{
public:
    const char* name() const override { return "set"; }
    const char* summary() const override { return "Set single features of cameras"; }

private:
    void addWords(CLI::App& app) override;
    std::vector<Assignment> assignments() const override;

    std::vector<std::string> m_words; // "Width=640"
};

class RunCommand : public WriteCommand
{
public:
    const char* name() const override { return "run"; }
    const char* summary() const override { return "Execute commands of cameras, such as TriggerSoftware"; }

private:
    void addWords(CLI::App& app) override;
    std::vector<Assignment> assignments() const override;

    std::vector<std::string> m_commands;
};

} // namespace companion
