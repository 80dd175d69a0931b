// Single features of one camera set, or commands executed, one after the other, as a person asks for them.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/imports/AuditLog.h"

#include <QString>

#include <functional>
#include <vector>

namespace companion
{

struct Assignment
{
    QString feature;
    QString value;          // as a person writes it (LiveFeature.h); of a command: nothing
    bool isCommand = false; // to be executed
};

struct FeatureWrites
{
    CameraCheck check; // an entry for each assignment that was come to
    std::vector<Change> changes;
    std::vector<Change> inDoubt = {}; // writes that no answer came to, and that were not read since

    // Names it in the check as well.
    void doubt(const QString& feature, const QString& from);
};

// Takes the camera exclusively and blocks until it has answered. Nothing is written when one of the
// assignments means nothing to the camera; the first one that it does not take ends the work. `mayGoOn` is
// asked before each.
FeatureWrites writeFeatures(const ListedCamera& camera, const std::vector<Assignment>& assignments,
                            const std::function<bool()>& mayGoOn);

} // namespace companion
