#include "SuiteTools/SuiteTools.h"

// Both texts come from the project's version in the build.
namespace VELAInterface
{

QString softwareVersion()
{
    return QStringLiteral(SUITETOOLS_SOFTWARE_VERSION);
}

QString curExeVersion()
{
    return QStringLiteral(SUITETOOLS_PROGRAM_VERSION);
}

unsigned int toolsSupportNum()
{
    return 32;
}

} // namespace VELAInterface
