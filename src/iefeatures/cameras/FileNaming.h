// What the file of a camera is called, by which files and cameras find together again.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <QString>

#include <string>
#include <vector>

namespace companion
{

enum class FileNaming
{
    ModelAndSerial, // as the jobs have it, "EMU-1_0123.fpk"
    Serial,
    Name, // the user's
    Address
};

// What people may name one by; none of them: ModelAndSerial.
std::vector<std::string> fileNamingWords();
FileNaming fileNaming(const std::string& word);
// "serial number", "model and serial number"
QString namingText(FileNaming naming);

QString fileNameOf(const ListedCamera& camera, FileNaming naming);
// Why no file in a folder can be called after the camera, what can follow its title and a colon; empty: one
// can. Names come from cameras: one that leads out of the folder, or that nobody could type, is none.
QString fileNameProblem(const ListedCamera& camera, FileNaming naming);

} // namespace companion
