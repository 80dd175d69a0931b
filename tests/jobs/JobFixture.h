// What the worker's tests share: one worker, its camera "S1" by script, a folder, and everything that happens
// in one sequence of words.
#pragma once

#include "QOperateThreadProbe.h"
#include "support/QtPrinting.h"
#include "support/Recorder.h"
#include "support/RecordingSuiteTools.h"
#include "support/ScriptedCamera.h"

#include <QByteArrayList>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>
#include <thread>

// Records of cameras; only the part of their transport is meant to be read.
StructDeviceInfo gigeDevice(const QByteArray& model, const QByteArray& serial, int id);
StructDeviceInfo usbDevice(const QByteArray& model, const QByteArray& serial, int id);
StructDeviceInfo cameraLinkDevice(const QByteArray& model, const QByteArray& serial, int id);

// The first call that fetches a description, into 3 MiB.
const QString kFirstFetch = "GetGenICamXML 3145728";

class JobFixture : public ::testing::Test
{
protected:
    JobFixture();
    ~JobFixture() override;

    // Enters the signals of another worker too.
    void watch(QOperateThread& watched);

    // Runs the worker as it is set up, to its end.
    void run();
    // Exports to the folder.
    void runExport();
    void runExport(const StructDeviceInfo& record);

    // A description whose one category lists these nodes; each is an element with a Name.
    void describe(const QStringList& nodes);

    // What an export needs at least: a firmware version and a description, here without features.
    void makeExportable();

    // The node or the operation fails with that status from now on, and nothing else does.
    void failNode(const QByteArray& name, KX_Status status);
    void failCall(const QByteArray& operation, KX_Status status);

    // "begin 7 3", "info 7 failed text", "end 7 3 path", "log text" and calls as TraceEntry::toString() has
    // them.
    QStringList trace() const;
    QStringList takeTrace();
    QStringList infos() const { return trace().filter(QRegularExpression("^info ")); }
    QStringList logs() const { return trace().filter(QRegularExpression("^log ")); }
    // Raw bytes of the node names of all calls.
    QByteArrayList callNames() const;

    // The file that an export of `device` writes.
    QString target() const { return folder.path() + "/Cam_S1.fpk"; }
    void writeTarget(const QByteArray& bytes);
    QByteArray fileBytes() const { return fileBytes(target()); }
    static QByteArray fileBytes(const QString& path);
    // What stands between <Features> and </Features>.
    QByteArray features() const;

    tests::LogCapture logCapture;
    tests::Recorder& recorder = tests::Recorder::instance();
    QTemporaryDir folder;
    StructDeviceInfo device;
    tests::ScriptedDevice* camera = nullptr;
    QOperateThread worker;
    QOperateThreadProbe probe{worker};
};
