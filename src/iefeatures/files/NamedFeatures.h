// Which features a file to import names.
#pragma once

#include "jobs/file/FeaturesFile.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <map>

namespace companion
{

struct NamedFeatures
{
    using Blocks = std::map<int64_t, QString>; // of register entries of a features file: their features

    QStringList names;             // in the file's order, each once
    QMap<QString, QString> values; // of each name: its last text; null for a register block
    Blocks blocks;

    void name(const QString& feature, const QString& text);
    void add(const NamedFeatures& behind); // of a file that is imported behind this one
};

NamedFeatures namedBy(const ie::FeaturesContent& content);
// Of what can be read: a file that is no bag names nothing.
NamedFeatures namedByBag(const QString& bagFile);

// Whether the file begins as feature bags do, with a "#"; features files are XML.
bool isFeatureBag(const QString& path);

} // namespace companion
