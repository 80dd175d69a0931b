// The libraries of grabbers' makers on this machine: GenTL producers, files that end in .cti, in the folders
// that GENICAM_GENTL64_PATH names (GenICam GenTL, "Installation"), and Camera Link's serial libraries,
// clser*.so or clser*.dll, in those of CLSERIALPATH; on Windows of the registry value of that name where
// there is no variable (Camera Link 1.1, "API Functions"). Separated by colons, on Windows by semicolons.
#pragma once

#include <string>
#include <vector>

namespace kx
{

// Absolute paths, UTF-8 on Windows, each file once however many names lead to it; in the folders' order, by
// name within one.
std::vector<std::string> gentlProducers();
std::vector<std::string> serialLibraries();

// What can be told of a file without loading it: a sentence's end ("is no shared library"), or an empty text.
std::string libraryFileProblem(const std::string& path);

} // namespace kx
