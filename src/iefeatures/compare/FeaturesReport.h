// A features file as people and scripts read it.
#pragma once

#include "iefeatures/console/Console.h"

#include "jobs/file/FeaturesFile.h"

#include <QString>

namespace companion
{

// The header; the plain features in aligned columns; the register blocks, each address on a line of its own
// with up to four words, the rest of a longer register on lines below.
// `columns`: that lines are fitted to, values cut in the middle; 0: none is.
QString featuresText(const ie::FeaturesContent& content, int columns = 0);
// The fields of its object.
Json featuresJson(const ie::FeaturesContent& content);

} // namespace companion
