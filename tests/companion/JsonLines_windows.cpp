#include "companion/JsonLines.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace tests
{

void holdJsonLines(const QString& path)
{
    const QString program = QFileInfo(QCoreApplication::applicationFilePath()).baseName();
    const QString kept = QDir(IE_JSON_LINES).filePath(program + ".jsonl");
    QFile::remove(kept);
    EXPECT_TRUE(QDir().mkpath(IE_JSON_LINES) && QFile::copy(path, kept)) << kept.toStdString();
}

} // namespace tests
