#include "iefeatures/cameras/NamePatterns.h"

namespace companion
{
namespace
{

QString expressionFor(const QStringList& patterns)
{
    QStringList alternatives;
    for (const QString& pattern : patterns)
        alternatives += QRegularExpression::escape(pattern).replace("\\*", ".*");
    const QString nothing = "(?!)";
    return QRegularExpression::anchoredPattern(patterns.isEmpty() ? nothing : alternatives.join('|'));
}

} // namespace

NamePatterns::NamePatterns(const QStringList& patterns)
    : m_expression(expressionFor(patterns), QRegularExpression::DotMatchesEverythingOption)
{}

bool NamePatterns::match(const QString& name) const
{
    return m_expression.match(name).hasMatch();
}

} // namespace companion
