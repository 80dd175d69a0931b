// --line and --camera: cameras chosen by their names in an inventory.
#pragma once

#include "iefeatures/cameras/CameraSelection.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/line/Inventory.h"

#include <string>
#include <vector>

namespace companion
{

class LineOption
{
public:
    // --line FILE among the options of `group`, and --camera NAME.
    void addOptions(CLI::App& app, CLI::App& group);

    bool isGiven() const { return !m_file.empty(); }

    // Reads the inventory, where it is given, and lets the selection choose by it; before any camera is
    // asked. ExitWell, or why nothing is done, which is told. This must outlive the selection's choices.
    int prepare(Console& console, CameraSelection& selection);

private:
    // Those that are meant, whatever name and address they have by now; who is not there is missing.
    CameraSelection::Choice choose(const std::vector<ListedCamera>& cameras) const;

    std::string m_file;               // empty: not given
    std::vector<std::string> m_names; // empty: all of the inventory
    Inventory m_inventory;
};

} // namespace companion
