// Why a listed feature may be missing in an export: a rule that keeps it out, or a line in the log.
#pragma once

#include <QDomElement>
#include <QMap>
#include <QString>
#include <QStringList>

namespace tests
{

// The rule that keeps a node out of every export without a filter file, in words; empty when there is none.
QString ruleAgainst(const QString& name, const QMap<QString, QDomElement>& nodes);

// That rule, or the first log line about the feature or about a converter or register on the way to its
// value, or an empty length; empty when nothing explains it.
QString whyLeftOut(const QString& name, const QMap<QString, QDomElement>& nodes, const QStringList& log);

} // namespace tests
