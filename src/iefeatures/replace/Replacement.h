// A new camera takes the place of one that is gone, step by step. Each step looks at the camera first, so
// that what was stopped, or has failed, can be done again from its begin.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/console/ReportStyle.h"
#include "iefeatures/imports/AuditLog.h"
#include "iefeatures/imports/ImportFiles.h"
#include "iefeatures/line/Inventory.h"
#include "iefeatures/network/IpPlace.h"
#include "iefeatures/replace/ReplacementJournal.h"

#include <chrono>

namespace companion
{

struct ReplaceTask
{
    const Inventory& inventory; // as it was read under the line's lock
    const InventoryCamera& wanted;
    bool isRestarted = true;              // where the camera can be
    bool acceptsFirmware = false;         // another one than the files are of: by the bag alone then
    std::chrono::milliseconds patience{}; // for a camera that restarts
    AuditRule audit = {};
    ReportStyle style = {};
    bool isJson = false;
};

class Replacement
{
public:
    // All of it must outlive this.
    Replacement(Console& console, const Look& look, const ReplaceTask& task,
                const ReplacementJournal& journal);

    // What will be done, a line each.
    QStringList plan(const ListedCamera& camera) const;

    // From the step on that `record` has not. Tells each step; an interrupt (Interrupt.h) ends it behind the
    // step in hand. Gives an ExitCode.
    int run(const ListedCamera& camera, const ReplacementRecord& record);

private:
    struct Step
    {
        ReplaceStep step;
        int (Replacement::*action)(); // gives an ExitCode
    };
    static const std::vector<Step>& steps();

    int reach();
    int compareKind();
    int setFeatures();
    int setName();
    int keep();
    int startWithSet();
    int restart();
    int writeInventory();

    int force(const IpPlace& place, bool isFinal);
    int importFiles(const SharedImportFiles& files, bool isVerified);
    int verify(const QString& when);
    int compareNames();
    int awaitReturn();
    bool isAsItShallBe(const ListedCamera& camera) const;
    int refuse(int code, const QString& text);
    void tell(const QString& text) const;
    int noteDone(ReplaceStep step);
    int finish();

    Console& m_console;
    const Look m_look;
    const ReplaceTask& m_task;
    const ReplacementJournal& m_journal;
    ListedCamera m_camera;
    ReplacementRecord m_record;
    SharedImportFiles m_files;
    bool m_isByBag = false; // the features file is of another firmware
    bool m_isProven = false;
};

} // namespace companion
