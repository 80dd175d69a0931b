// Whether an import could read what an export has written, to the same end.
#pragma once

#include <QString>
#include <QStringList>

namespace companion
{

struct ReadBack
{
    bool isGood = false;
    QStringList features; // that cannot be read as they were written: all of them, each once
    QString rest;         // the file without them; null when that cannot be read either
};

// The format does not escape: a text with a "<" or "&" in it makes a file that is no XML, or says something
// else. So the file has to be, but for white space, what its records would be written as.
ReadBack readBack(const QString& path);

} // namespace companion
