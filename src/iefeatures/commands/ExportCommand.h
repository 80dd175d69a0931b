// iefeatures export: a features file of each chosen camera.
#pragma once

#include "iefeatures/cameras/FileNaming.h"
#include "iefeatures/commands/JobCommand.h"

namespace companion
{

class ExportCommand : public JobCommand
{
public:
    const char* name() const override { return "export"; }
    const char* summary() const override { return "Write the features of cameras into files, one a camera"; }
    void addOptions(CLI::App& app) override;

private:
    const char* formatHelp() const override
    {
        return "xml: features file (default); bag: the camera library's feature bag";
    }
    bool takesControl() const override { return !m_isShared; }
    QString outputProblem() const override;
    QStringList objections(const std::vector<ListedCamera>& cameras) const override;
    FileNaming naming() const { return fileNaming(m_fileNaming); }
    QString objectionTo(const ListedCamera& camera) const;
    bool areNamesFree(Console& console, const std::vector<ListedCamera>& cameras) const;
    int carryOut(Console& console, const std::vector<ListedCamera>& cameras) const override;

    std::string m_folder;
    std::string m_fileNaming; // empty: model and serial number
    bool m_isShared = false;
    bool m_skipsUnreadable = false;
};

} // namespace companion
