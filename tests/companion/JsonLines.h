// What commands print for scripts, held against docs/iefeatures.schema.json.
#pragma once

#include <QString>

namespace tests
{

// Fails the test when a line of the file is no object that the schema allows. Windows: keeps the file, and
// the test companion_json_lines does so, with the Python of the system that all was built on.
void holdJsonLines(const QString& path);

} // namespace tests
