// A features file as people and scripts read it.
#pragma once

#include "jobs/file/FeaturesFile.h"

#include <QString>

#include <string>

namespace companion
{

// The header; the plain features in aligned columns; the register blocks, each address on a line of its own
// with up to four words, the rest of a longer register on lines below.
QString featuresText(const ie::FeaturesContent& content);
// One object.
std::string featuresJson(const ie::FeaturesContent& content);

} // namespace companion
