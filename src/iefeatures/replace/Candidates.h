// Which camera may take the place of another one. Asks nobody.
#pragma once

#include "iefeatures/cameras/CameraWord.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/line/LineMatch.h"

#include <QStringList>

#include <optional>
#include <vector>

namespace companion
{

struct CandidateRule
{
    std::optional<CameraWord> chosen; // the one that a person means
    bool takesNamed = false;          // also where it has a name
    bool isForced = false;            // also where the old one answers
};

struct CandidateChoice
{
    std::optional<ListedCamera> camera;
    ExitCode refusal = ExitWell; // why there is none
    QStringList told;            // sentences
};

// By itself only the one camera of the same model is taken that nobody controls, that has no name, and that
// none of the inventories knows; `neighbours` beside `inventory`.
CandidateChoice chooseCandidate(const Inventory& inventory, const std::vector<Inventory>& neighbours,
                                const InventoryCamera& wanted, const std::vector<ListedCamera>& cameras,
                                const CandidateRule& rule);

} // namespace companion
