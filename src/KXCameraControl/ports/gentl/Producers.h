// The GenTL producers of this machine: files that end in .cti, in the folders that GENICAM_GENTL64_PATH names
// (GenICam GenTL, "Installation"; separated by colons).
#pragma once

#include <string>
#include <vector>

namespace kx
{

// Absolute paths, each file once however many names lead to it; in the folders' order, by name within one.
std::vector<std::string> gentlProducers();

// What can be told of a file without loading it: a sentence's end ("is no shared library"), or an empty text.
std::string producerFileProblem(const std::string& path);

} // namespace kx
