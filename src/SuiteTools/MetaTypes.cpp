#include "SuiteTools/StructDeviceInfo.h"

// Runs when the library is loaded, so that every program of the suite finds the record by its name.
[[maybe_unused]] static const int g_structDeviceInfo =
    qRegisterMetaType<StructDeviceInfo>("StructDeviceInfo");
