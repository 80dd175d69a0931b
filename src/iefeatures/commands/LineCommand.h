// iefeatures line: what is done with the inventory of a line.
#pragma once

#include "iefeatures/commands/Command.h"

#include <memory>
#include <vector>

namespace companion
{

class LineCommand : public Command
{
public:
    LineCommand();

    const char* name() const override { return "line"; }
    const char* summary() const override
    {
        return "An inventory of cameras: what should be there, and what is";
    }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    struct Part
    {
        std::unique_ptr<Command> command;
        const CLI::App* parser = nullptr;
    };
    std::vector<Part> m_parts;
};

} // namespace companion
