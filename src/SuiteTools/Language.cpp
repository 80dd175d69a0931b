#include "SuiteTools/SuiteTools.h"

#include <QLocale>

namespace VELAInterface
{

QString language()
{
    const QString chinese = QStringLiteral("CH");
    const QString english = QStringLiteral("ENG");
    const QString chosen = qEnvironmentVariable("VELA_LANGUAGE");
    if (chosen == chinese || chosen == english)
        return chosen;
    // The language that the system speaks to its user, which need not be that of its number formats.
    const QStringList spoken = QLocale::system().uiLanguages();
    const bool isChinese = !spoken.isEmpty() && QLocale(spoken.first()).language() == QLocale::Chinese;
    return isChinese ? chinese : english;
}

} // namespace VELAInterface
