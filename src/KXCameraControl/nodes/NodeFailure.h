// How the question that a node cannot answer ends.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <string>

namespace kx
{

// Leaves the node map as a status; inside it is thrown.
struct NodeFailure
{
    KX_Status status;
    std::string text;
};

} // namespace kx
