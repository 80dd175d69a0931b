#include "iefeatures/cameras/FileNaming.h"

#include "iefeatures/cameras/CameraWord.h"
#include "iefeatures/console/Text.h"

#include "jobs/file/WholeFile.h"
#include "jobs/rules/DeviceNames.h"

#include <algorithm>

namespace companion
{
namespace
{

struct Word
{
    const char* word;
    FileNaming naming;
    const CameraTrait* trait;
};

const Word kWords[] = {{"name", FileNaming::Name, &kByName},
                       {"address", FileNaming::Address, &kByAddress},
                       {"serial", FileNaming::Serial, &kBySerial}};

// Null: it takes more than one.
const CameraTrait* traitOf(FileNaming naming)
{
    const auto found = std::find_if(std::begin(kWords), std::end(kWords),
                                    [naming](const Word& known) { return known.naming == naming; });
    return found == std::end(kWords) ? nullptr : found->trait;
}

} // namespace

std::vector<std::string> fileNamingWords()
{
    std::vector<std::string> words;
    for (const Word& known : kWords)
        words.emplace_back(known.word);
    return words;
}

FileNaming fileNaming(const std::string& word)
{
    const auto found = std::find_if(std::begin(kWords), std::end(kWords),
                                    [&](const Word& known) { return known.word == word; });
    return found == std::end(kWords) ? FileNaming::ModelAndSerial : found->naming;
}

QString namingText(FileNaming naming)
{
    const CameraTrait* trait = traitOf(naming);
    return trait ? trait->kind : "model and serial number";
}

QString fileNameOf(const ListedCamera& camera, FileNaming naming)
{
    const CameraTrait* trait = traitOf(naming);
    return trait ? camera.*trait->field + ".fpk"
                 : ie::featuresFileName(ie::deviceNames(camera.device.stDeviceInfo, ie::FieldEnd::AtSize));
}

QString fileNameProblem(const ListedCamera& camera, FileNaming naming)
{
    const CameraTrait* trait = traitOf(naming);
    if (trait && (camera.*trait->field).isEmpty())
        return QString("it has no %1 to call a file after.").arg(trait->kind);
    const QString name = fileNameOf(camera, naming);
    if (name.contains('/'))
        return "its file would lie outside of the folder: " + printable(name) + '.';
    // The jobs' own names are what they always were.
    if (!ie::liesInFolder(name) || (trait && printable(name) != name))
        return "no file can be called " + printable(name) + '.';
    return {};
}

} // namespace companion
