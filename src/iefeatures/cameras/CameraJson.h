// A camera as scripts get it in every object that is about one.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/console/Console.h"

namespace companion
{

// {"number":1,"transport":"GigE","model":...,"serial":...,"name":...,"address":...}; the number is the one in
// the list.
Json cameraJson(const ListedCamera& camera);

} // namespace companion
