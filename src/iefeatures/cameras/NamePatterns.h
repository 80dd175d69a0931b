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

private:
    QRegularExpression m_expression;
};

} // namespace companion
