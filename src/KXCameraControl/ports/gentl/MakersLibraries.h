// The libraries of grabbers' makers on this machine: GenTL producers, files that end in .cti, in the folders
// that GENICAM_GENTL64_PATH names (GenICam GenTL, "Installation"), and Camera Link's serial libraries,
// clser*.so, in those of CLSERIALPATH (Camera Link knows that name as a registry value of Windows alone).
// Separated by colons.
#pragma once

#include <string>
#include <vector>

namespace kx
{

// Absolute paths, each file once however many names lead to it; in the folders' order, by name within one.
std::vector<std::string> gentlProducers();
std::vector<std::string> serialLibraries();

// What can be told of a file without loading it: a sentence's end ("is no shared library"), or an empty text.
std::string libraryFileProblem(const std::string& path);

} // namespace kx
