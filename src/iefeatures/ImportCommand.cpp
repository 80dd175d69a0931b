#include "iefeatures/ImportCommand.h"

#include "iefeatures/ImportSummary.h"
#include "iefeatures/Interrupt.h"

#include <QOperateThread.h>

#include <CLI/CLI.hpp>

namespace companion
{

void ImportCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "File to import, as an export has written it")
        ->required()
        ->type_name("")
        ->check([](const std::string& file) { return std::string(file.empty() ? "Name a file." : ""); });
    JobCommand::addOptions(app);
}

QStringList ImportCommand::objections(const std::vector<Camera>&) const
{
    return isBag() ? objectionsToBagPath(QString::fromStdString(m_file)) : QStringList();
}

void ImportCommand::setUp(QOperateThread& worker, const StructDeviceInfo& device) const
{
    const QString file = QString::fromStdString(m_file);
    if (isBag())
        worker.SetFeatureBagImportJob(device, file);
    else
        worker.SetXmlImportJob(device, file);
}

int ImportCommand::conclude(Console& console, const std::vector<JobRecord>& records) const
{
    std::vector<ImportOutcome> results;
    for (const JobRecord& record : records)
        results.push_back(examineImport(record));
    nameRegisters(QString::fromStdString(m_file), results);
    for (const ImportOutcome& result : results)
        for (const QString& remark : importRemarks(result))
            console.err(result.record.job.camera.title() + ": " + remark + '\n');
    if (Interrupt::isRequested())
        console.err(std::string("Interrupted.\n"));
    console.out(wantsJson() ? importJson(results) : importTable(results).toStdString());
    return importExitCode(results, Interrupt::isRequested());
}

} // namespace companion
