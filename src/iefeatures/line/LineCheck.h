// A line against its inventory: each camera is asked for what it is set to. Only reads; takes no control.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/line/LineMatch.h"

#include <QDateTime>

#include <functional>
#include <optional>
#include <vector>

namespace companion
{

struct LineCameraCheck
{
    LineMatch match;                       // with what asking the camera has added
    std::optional<CameraCheck> check = {}; // by its features file, where it was asked

    QString name() const;     // in the inventory; of others model and serial number
    QString firmware() const; // null: not known
    // Of the features, entries of a verdict.
    int count(EntryVerdict verdict) const;
    int differing() const; // features that are not as they should be
    // It is there, and the inventory has nothing to compare its features with.
    bool lacksComparison() const;
};

struct LineCheck
{
    std::vector<LineCameraCheck> cameras;
    QDateTime begun; // UTC

    LineState gravest() const; // InOrder where there are none
    int count(LineState state) const;
};

// What a camera's check, or what is planned for it, comes to.
LineState stateOf(CameraVerdict verdict);

// Of a state, and of the gravest of them: 0 in order, 4 something differs, 5 another model or firmware, 3
// missing, 1 not judged, 6 files.
ExitCode exitCodeOf(LineState state);

// How a camera is asked; tests ask nobody.
struct LineQuestions
{
    // Whether the camera is as the file says (CameraCheck.h).
    std::function<CameraCheck(const ListedCamera& camera, const ie::FeaturesContent& file,
                              const CheckRule& rule)>
        features;
    // Mask, gateway and switches, by keys of the inventory ("false", "true" for switches); empty where the
    // camera does not tell.
    std::function<QMap<QString, QString>(const ListedCamera& camera)> network;
};
// Adds the differences of mask, gateway and switches, which the camera is asked for.
void compareNetwork(const LineQuestions& questions, LineMatch& match);

// Over connections that only read; ends behind the feature in hand when `mayGoOn` says no.
LineQuestions askCameras(const std::function<bool()>& mayGoOn);

// All cameras at the same time, those of the inventory that answered by what it has of them. A strict check
// also counts what sessions and automatic functions set. Blocks until all have answered.
LineCheck checkLine(Console& console, const Inventory& inventory, const std::vector<ListedCamera>& cameras,
                    bool isStrict, const LineQuestions& questions);

// SHA-256 in lower case; empty when it cannot be read.
QString hashOfFile(const QString& path);

} // namespace companion
