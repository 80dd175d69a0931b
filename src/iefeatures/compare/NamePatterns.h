// Sets of feature names, written with "*" for any characters.
#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringList>

namespace companion
{

class NamePatterns
{
public:
    explicit NamePatterns(const QStringList& patterns);

    // The whole name, in its case.
    bool match(const QString& name) const;

    // Features of the standard naming (SFNC) and of common practice that change by themselves: temperatures,
    // counters and timers, timestamps, running times, states of lines and links.
    static const QStringList& changingByThemselves();

private:
    QRegularExpression m_expression;
};

} // namespace companion
