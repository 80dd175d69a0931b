// iefeatures list: the cameras on the line.
#pragma once

#include "iefeatures/Command.h"

namespace companion
{

class ListCommand : public Command
{
public:
    const char* name() const override { return "list"; }
    const char* summary() const override { return "Show the cameras on the line"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    bool m_json = false;
};

} // namespace companion
