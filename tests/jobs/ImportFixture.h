// What the import's tests share: a camera that a file fits, files by their parts, and what an import did to
// the camera behind its checks.
#pragma once

#include "JobFixture.h"

// One plain feature as an export writes it.
QByteArray plainFeature(const QByteArray& name, const QByteArray& type, const QByteArray& value);
// A register block around `entries`; parts that are null are left out.
QByteArray registerFeature(const QByteArray& name, const QByteArray& reg, const QByteArray& len,
                           const QByteArray& entries);
QByteArray registerEntry(const QByteArray& address, const QByteArray& text, const QByteArray& more = {});
// The root around `inside`.
QByteArray featuresFile(const QByteArray& inside, const QByteArray& version = "7.8.9");
// A file that belongs to the fixture's camera.
QByteArray fittingFile(const QByteArray& features, const QByteArray& version = "7.8.9");

class ImportFixture : public JobFixture
{
protected:
    ImportFixture();

    QString source() const { return folder.filePath("in.fpk"); }
    // Writes the file and imports it with `worker`, over a fresh record.
    void import(const QByteArray& bytes);
    void importPath(const QString& path);
    void importFeatures(const QByteArray& features) { import(fittingFile(features)); }

    // Everything, with the fixed part before the checks' outcome taken for granted: from the opened camera up
    // to its close.
    QStringList inside() const;
    // What follows the firmware's reading, which is the last thing that the checks of a fitting file do.
    QStringList applied() const;
    // Entries of applied() that write: setters and WriteMemory.
    QStringList writes() const;
    int count(const QString& text) const { return applied().count(text); }

    // The import went through to its end and said nothing to the user.
    void expectSilentEnd(unsigned int code = 0);
};

// "log \"Operate Feature Failed...\"" of a node and a status in the log's words.
QString nodeFailure(const QString& name, const QString& status);
// "log \"SetValueFromReg  failed...\""
QString registerFailure(const QString& name, const QString& address);
