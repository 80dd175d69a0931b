// Which features a file to import names.
#pragma once

#include <QString>
#include <QStringList>

#include <map>

namespace companion
{

struct ImportedFeatures
{
    QString model;     // of a features file
    QStringList names; // in the file's order, each once
    std::map<int64_t, QString>
        blocks; // of the register entries of a features file: the feature they belong to
};

// Of what can be read: a file that is none gives nothing.
ImportedFeatures featuresOfFile(const QString& featuresFile);
ImportedFeatures featuresOfBag(const QString& bagFile);

} // namespace companion
