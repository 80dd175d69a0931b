// Who of those that answered is which camera of the inventory. Asks nobody.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/line/Inventory.h"

#include <QString>

#include <optional>
#include <vector>

namespace companion
{

// How a camera of the line is; each is graver than the one before.
enum class LineState
{
    InOrder,
    Stranger,     // there, and not in the inventory
    Retired,      // there, and was replaced
    Differs,      // in its features
    Elsewhere,    // the right camera with another name, address or interface, or other switches for those
    OtherCamera,  // another one has its name, and it is not there
    Incompatible, // another model or firmware
    Missing,
    NotJudged,   // it could not be asked, or not wholly
    Unreachable, // it is there, and no packet for it arrives
    BadFiles     // what should be in it cannot be read, or is not what the inventory means
};
constexpr LineState kLineStates[] = {LineState::InOrder,      LineState::Stranger,  LineState::Retired,
                                     LineState::Differs,      LineState::Elsewhere, LineState::OtherCamera,
                                     LineState::Incompatible, LineState::Missing,   LineState::NotJudged,
                                     LineState::Unreachable,  LineState::BadFiles};
// "in order", "not in the inventory"
QString lineStateWord(LineState state);

// Something about a camera but its features that is not as the inventory has it.
struct LineDifference
{
    QString what; // a key of the inventory, or "name"
    QString expected;
    QString found;
};

// One camera of the inventory, or one that is not in it.
struct LineMatch
{
    const InventoryCamera* wanted = nullptr; // null: it is not in the inventory
    std::optional<ListedCamera> camera;      // that is meant; none: missing
    LineState state = LineState::InOrder;    // as far as nobody has to be asked
    QString reason;                          // a sentence; empty: the state says it all
    std::vector<LineDifference> differences = {};
    bool isOther = false; // the camera only has the name of the one that is wanted
};

// A MAC address or a GUID tells a camera; where the inventory or the camera has neither, model and serial
// number do. The inventory's cameras in its order, then the others in theirs. `inventory` must outlive the
// result.
std::vector<LineMatch> matchLine(const Inventory& inventory, const std::vector<ListedCamera>& cameras);

} // namespace companion
