// What the window does in a batch.
#pragma once

#include "jobs/worker/QOperateThread.h"

enum WindowOperation : int
{
    OPERATION_NONE = -1, // no batch yet
    OPERATION_IMPORT = 0,
    OPERATION_EXPORT = 1
};

// The window's operations and the workers' job types agree in these numbers. Meant: a batch may be told by
// either.
static_assert(OPERATION_IMPORT == int(JOB_FEATURE_BAG_IMPORT) &&
                  OPERATION_EXPORT == int(JOB_FEATURE_BAG_EXPORT),
              "one rule for both");

inline bool isImport(unsigned int nType)
{
    return nType == JOB_FEATURE_BAG_IMPORT || nType == JOB_FEATURE_XML_IMPORT;
}

inline bool isExport(unsigned int nType)
{
    return nType == JOB_FEATURE_BAG_EXPORT || nType == JOB_FEATURE_XML_EXPORT;
}
