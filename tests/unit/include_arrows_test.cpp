// Includes point down: a folder of src/ uses what stands below it in the tables here, never what stands above
// it or beside it. A folder that no table names fails too, so that a new one is given its place.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;

// Folders that may include one another: a part, named by the first.
using Part = std::vector<std::string>;
// From the top to the bottom; parts of one row do not know each other.
using Rows = std::vector<std::vector<Part>>;

struct Component
{
    std::string folder;    // below src/; "": the whole
    std::string interface; // the folder below it that others may include from; "": any
    Rows rows;
};

const std::string kProgram = "VELA_Import_Export_Features";

const std::vector<Component> kComponents = {
    {"",
     "",
     {
         {{kProgram, kProgram + "/startup"}},
         {{kProgram + "/window"}, {"iefeatures"}},
         {{"StyledCtl"}, {"DevListMgr"}, {"SuiteTools/widgets"}},
         {{kProgram + "/jobs"}},
         {{"camera_line"}},
         {{"SuiteTools"}, {"KXCameraControl"}, {"camera_emulator"}, {"gentl_host"}},
         {{"digest"},
          {"formula"},
          {"gvcp"},
          {"gencp"},
          {"gentl"},
          {"held_files"},
          {"own_files"},
          {"xml_entities"},
          {"KXCameraControl/include/KXCameraControl"}},
     }},
    {kProgram + "/jobs",
     "",
     {{{"worker"}}, {{"export"}, {"import"}}, {{"description"}, {"nodes"}}, {{"rules"}, {"file"}}}},
    {"iefeatures",
     "",
     {{{""}},
      {{"commands"}},
      {{"replace"}},
      {{"line"}},
      {{"network"}},
      {{"imports"}},
      {{"check"}, {"compare"}},
      {{"exports"}},
      {{"running"}},
      {{"cameras"}, {"files"}},
      {{"console"}}}},
    {"KXCameraControl",
     "include/KXCameraControl",
     {{{"api"}},
      {{"bag"}},
      {{"camera"}},
      {{"description"}, {"nodes"}},
      {{"ports", "ports/gige", "ports/gencp", "ports/usb3", "ports/cameralink", "ports/gentl"}}}},
    // A public header declares a class of any of the folders: all of them stand at the bottom.
    {"StyledCtl",
     "include/StyledCtl",
     {{{"dialogs"}}, {{"window"}}, {{"controls"}, {"table"}}, {{"style"}}, {{"include/StyledCtl"}}}},
    {"SuiteTools", "include/SuiteTools", {{{"", "include/SuiteTools"}}}},
    {"DevListMgr", "include/DevListMgr", {{{"", "include/DevListMgr"}}}},
    {"camera_emulator", "", {{{"producer"}}, {{""}}, {{"core"}}}},
};

// Arrows that point up today. Each shall go; one that is gone has to leave this table.
struct Exception
{
    std::string from;
    std::string to;
};
const std::vector<Exception> kExceptions = {};

bool isWithin(const std::string& path, const std::string& folder)
{
    return folder.empty() || path == folder || path.rfind(folder + "/", 0) == 0;
}

struct Place
{
    size_t row = 0;
    const Part* part = nullptr; // null: the table does not name the folder
};

Place placeOf(const Component& component, const std::string& folder, bool withSubfolders)
{
    Place best;
    size_t longest = 0;
    for (size_t row = 0; row < component.rows.size(); ++row)
        for (const Part& part : component.rows[row])
            for (const std::string& name : part) {
                const bool isIt = withSubfolders ? isWithin(folder, name) : folder == name;
                if (isIt && (!best.part || name.size() >= longest)) {
                    best = {row, &part};
                    longest = name.size();
                }
            }
    return best;
}

const Component* insideOf(const std::string& name)
{
    const auto found = std::find_if(kComponents.begin() + 1, kComponents.end(),
                                    [&](const Component& one) { return one.folder == name; });
    return found == kComponents.end() ? nullptr : &*found;
}

std::string below(const std::string& folder, const std::string& parent)
{
    return folder.size() > parent.size() ? folder.substr(parent.size() + 1) : "";
}

// What is wrong with a folder's place; empty: nothing.
std::string folderFault(const std::string& folder)
{
    const Place place = placeOf(kComponents[0], folder, true);
    if (!place.part)
        return folder + ": no table names this folder";
    const auto home = std::find_if(place.part->rbegin(), place.part->rend(),
                                   [&](const std::string& name) { return isWithin(folder, name); });
    const Component* inside = insideOf(*home);
    const bool isKnown =
        inside ? placeOf(*inside, below(folder, *home), false).part != nullptr : folder == *home;
    return isKnown ? "" : folder + ": the table of " + *home + " does not name this folder";
}

// What is wrong with an include from one folder to another; empty: nothing.
std::string arrowFault(const std::string& from, const std::string& to)
{
    const Place source = placeOf(kComponents[0], from, true);
    const Place target = placeOf(kComponents[0], to, true);
    if (!source.part || !target.part)
        return "a folder that no table names";
    const std::string& home = target.part->front();
    if (source.part != target.part) {
        if (source.row >= target.row)
            return "not below it";
        const Component* inside = insideOf(home);
        const bool isOpen = !inside || inside->interface.empty() || below(to, home) == inside->interface;
        return isOpen ? "" : "not the interface of " + home;
    }
    const Component* inside = insideOf(home);
    if (!inside)
        return "";
    const Place inner = placeOf(*inside, below(from, home), false);
    const Place other = placeOf(*inside, below(to, home), false);
    const bool isDown = inner.part && other.part && (inner.part == other.part || inner.row < other.row);
    return isDown ? "" : "not below it";
}

// ---- the tree as it stands ----

const fs::path kRoot = IE_SOURCES;

std::string folderOf(const fs::path& file)
{
    const std::string folder = fs::relative(file.parent_path(), kRoot).generic_string();
    return folder == "." ? "" : folder;
}

std::vector<fs::path> sources()
{
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kRoot)) {
        const std::string ending = entry.path().extension().string();
        if (ending == ".h" || ending == ".cpp" || ending == ".c")
            files.push_back(entry.path());
    }
    return files;
}

// The file of ours that is meant; empty: none of ours.
fs::path resolved(const fs::path& file, const std::string& name)
{
    std::vector<fs::path> roots = {file.parent_path(), kRoot, kRoot / kProgram};
    for (const fs::directory_entry& entry : fs::directory_iterator(kRoot)) {
        roots.push_back(entry.path() / "include");
        roots.push_back(entry.path());
    }
    for (const fs::path& root : roots)
        if (fs::is_regular_file(root / name))
            return fs::canonical(root / name);
    return {};
}

struct Arrow
{
    std::string file;
    std::string name; // as the include has it
    std::string from;
    std::string to; // empty: no file of ours
};

std::vector<Arrow> arrows()
{
    static const std::regex include("^\\s*#\\s*include\\s*([<\"])([^>\"]+)[>\"].*");
    std::vector<Arrow> found;
    for (const fs::path& file : sources()) {
        std::ifstream text(file);
        for (std::string line; std::getline(text, line);) {
            std::smatch match;
            if (line.find("include") == std::string::npos || !std::regex_match(line, match, include))
                continue;
            const fs::path target = resolved(file, match[2]);
            if (!target.empty() || match[1] == "\"")
                found.push_back({fs::relative(file, kRoot).generic_string(), match[2], folderOf(file),
                                 target.empty() ? "" : folderOf(target)});
        }
    }
    return found;
}

TEST(IncludeArrows, everyFolderHasItsPlace)
{
    std::set<std::string> folders;
    for (const fs::path& file : sources())
        folders.insert(folderOf(file));
    EXPECT_GT(folders.size(), 20u);
    for (const std::string& folder : folders)
        EXPECT_EQ(folderFault(folder), "");
}

TEST(IncludeArrows, pointDown)
{
    std::set<const Exception*> used;
    const std::vector<Arrow> all = arrows();
    EXPECT_GT(all.size(), 300u);
    for (const Arrow& arrow : all) {
        if (arrow.to.empty()) {
            ADD_FAILURE() << arrow.file << " includes \"" << arrow.name << "\", which is no file of src/";
            continue;
        }
        const std::string fault = arrowFault(arrow.from, arrow.to);
        const auto known =
            std::find_if(kExceptions.begin(), kExceptions.end(), [&](const Exception& exception) {
                return exception.from == arrow.file && exception.to == arrow.name;
            });
        if (!fault.empty() && known != kExceptions.end())
            used.insert(&*known);
        else
            EXPECT_EQ(fault, "") << arrow.file << " includes \"" << arrow.name << '"';
    }
    for (const Exception& exception : kExceptions)
        EXPECT_TRUE(used.count(&exception)) << exception.from << " -> " << exception.to << " is gone";
}

// The rules themselves, so that a table that allows everything is seen.
TEST(IncludeArrows, knowUpFromDown)
{
    const std::string jobs = kProgram + "/jobs/";
    EXPECT_EQ(arrowFault("KXCameraControl/api", "KXCameraControl/nodes"), "");
    EXPECT_EQ(arrowFault("KXCameraControl/nodes", "formula"), "");
    EXPECT_EQ(arrowFault("KXCameraControl/ports", "KXCameraControl/ports/gige"), "");
    EXPECT_EQ(arrowFault("KXCameraControl/nodes", "KXCameraControl/camera"), "not below it");
    EXPECT_EQ(arrowFault("KXCameraControl/description", "KXCameraControl/nodes"), "not below it");
    EXPECT_EQ(arrowFault(jobs + "rules", "KXCameraControl/include/KXCameraControl"), "");
    EXPECT_EQ(arrowFault(jobs + "rules", "KXCameraControl/nodes"), "not the interface of KXCameraControl");
    EXPECT_EQ(arrowFault(jobs + "export", jobs + "worker"), "not below it");
    EXPECT_EQ(arrowFault(jobs + "worker", kProgram + "/window"), "not below it");
    EXPECT_EQ(arrowFault("iefeatures/check", "iefeatures/compare"), "not below it");
    EXPECT_EQ(arrowFault("iefeatures/cameras", jobs + "file"), "");
    EXPECT_EQ(arrowFault("gvcp", "SuiteTools/include/SuiteTools"), "not below it");
    EXPECT_NE(folderFault("iefeatures/attic"), "");
    EXPECT_NE(folderFault("attic"), "");
    EXPECT_NE(folderFault("KXCameraControl/nodes/attic"), "");
}

} // namespace
