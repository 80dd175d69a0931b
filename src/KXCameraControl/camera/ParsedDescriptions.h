// Descriptions ready for use, shared by all handles of this process whose cameras have the same one.
#pragma once

#include "KXCameraControl/description/Description.h"
#include "KXCameraControl/nodes/NodeTable.h"

namespace kx
{

struct ParsedDescription
{
    NodeTable nodes;     // empty where the text cannot be used
    std::string problem; // why it cannot, as a sentence; else empty
};

// From any thread. A text is parsed once for all who have it, also for those who ask while it is being parsed
// (they wait for the parser, never for a camera). The last few stay when their cameras are closed, as jobs
// open the same camera one after another.
std::shared_ptr<const ParsedDescription> parsedDescription(const Description& description);

} // namespace kx
