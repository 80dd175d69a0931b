// What a file holds.
#pragma once

#include <QFile>

#include <gtest/gtest.h>

namespace tests
{

inline QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

} // namespace tests
