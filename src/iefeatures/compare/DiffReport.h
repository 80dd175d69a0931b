// A comparison of two features files as people and scripts read it.
#pragma once

#include "iefeatures/compare/FeatureComparison.h"
#include "iefeatures/compare/FeatureSource.h"
#include "iefeatures/console/Console.h"

#include <QString>

namespace companion
{

// Two lines that name the sides; a table with a line for each header field, plain feature and register word
// that differs; a line that counts them.
QString diffText(const FeatureComparison& comparison, const QString& titleA, const QString& titleB);
// The fields of its object.
Json diffJson(const FeatureComparison& comparison, const FeatureSource& a, const FeatureSource& b);

} // namespace companion
