// iefeatures import: one file into each chosen camera.
#pragma once

#include "iefeatures/JobCommand.h"

namespace companion
{

class ImportCommand : public JobCommand
{
public:
    const char* name() const override { return "import"; }
    const char* summary() const override { return "Set the features of cameras as a file says"; }
    void addOptions(CLI::App& app) override;

private:
    QStringList objections(const std::vector<Camera>& cameras) const override;
    void setUp(QOperateThread& worker, const StructDeviceInfo& device) const override;
    int conclude(Console& console, const std::vector<JobRecord>& records) const override;

    std::string m_file;
};

} // namespace companion
