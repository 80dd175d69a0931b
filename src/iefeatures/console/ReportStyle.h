// How reports are laid out for people.
#pragma once

namespace companion
{

enum class Detail
{
    Summary,   // how it stands, without a line for any feature
    Attention, // what is amiss, what an import would write, warnings
    All        // every entry but those that are as the file says, and all that the file had to prove
};

struct ReportStyle
{
    ReportStyle(Detail detailed = Detail::Attention) : detail(detailed) {}

    Detail detail;
    int columns = 0;                 // that lines are fitted to; 0: they are as long as they are
    bool isGrouped = false;          // features under their categories
    bool hasDifferencesOnly = false; // nothing that only one side has, and no warnings
    const char* target = "file";     // what the cameras' values are held against
};

// What COLUMNS says, 0: no end; else what the terminal has that results go to; 0 where they go elsewhere.
int reportColumns();

} // namespace companion
