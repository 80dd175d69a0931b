#include "SuiteTools/SuiteTools.h"

#include <QDir>
#include <QStandardPaths>

namespace VELAInterface
{

namespace
{

QString withoutTrailingSeparator(const QString& path)
{
    QString clean = QDir::cleanPath(QDir::fromNativeSeparators(path));
    while (clean.endsWith(QLatin1Char('/')))
        clean.chop(1);
    return clean;
}

QString chosenOr(const char* variable, const QString& standardPlace)
{
    const QString chosen = qEnvironmentVariable(variable);
    return withoutTrailingSeparator(chosen.isEmpty() ? standardPlace + QStringLiteral("/VELA") : chosen);
}

// Windows has a folder that every user may write to; elsewhere the user's own data folder has to serve.
QString sharedDataPlace()
{
#ifdef Q_OS_WIN
    const QString programData = qEnvironmentVariable("ProgramData");
    if (!programData.isEmpty())
        return programData;
#endif
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

} // namespace

QString programDataPath()
{
    return chosenOr("VELA_PROGRAM_DATA", sharedDataPlace());
}

QString userDataPath()
{
    return chosenOr("VELA_USER_DATA", QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
}

} // namespace VELAInterface
