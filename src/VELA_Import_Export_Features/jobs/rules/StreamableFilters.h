// Lists of features that exports leave out, which people may put beside the program's data.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace ie
{

struct StreamableFilter
{
    QString transport; // "GigE": the word that the transport has in records
    QString path;      // need not exist
};
std::vector<StreamableFilter> streamableFilters();

constexpr qint64 kLargestFilter = 1024 * 1024; // bytes; whoever exports should look before a job reads it

} // namespace ie
