// A comparison of two features files as people and scripts read it.
#pragma once

#include "iefeatures/compare/FeatureComparison.h"
#include "iefeatures/compare/FeatureSource.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/console/ReportStyle.h"

#include <QString>

namespace companion
{

// Two lines that name the sides; a line that counts; a table with a line for each header field, plain feature
// and register word that differs; what was left out.
QString diffText(const FeatureComparison& comparison, const QString& titleA, const QString& titleB,
                 const ReportStyle& style = {});
// The fields of its object.
Json diffJson(const FeatureComparison& comparison, const FeatureSource& a, const FeatureSource& b);

} // namespace companion
