#include "companion/JsonLines.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <cstdio>

namespace tests
{
namespace
{

// What stands before the C library of a test is not for the validator.
int validate(const QString& path)
{
    QProcess validator;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("LD_PRELOAD");
    validator.setProcessEnvironment(environment);
    validator.setProcessChannelMode(QProcess::ForwardedChannels);
    validator.start("python3", {IE_CHECK_JSON_LINES, IE_JSON_SCHEMA, path});
    return validator.waitForFinished(-1) ? validator.exitCode() : -2;
}

} // namespace

void holdJsonLines(const QString& path)
{
    constexpr int kNoValidator = 77;
    const int code = validate(path);
    if (code == kNoValidator)
        std::puts("SKIPPED: no python3-jsonschema, so no object was held against the schema");
    else
        EXPECT_EQ(code, 0) << "objects that docs/iefeatures.schema.json does not allow";
}

} // namespace tests
