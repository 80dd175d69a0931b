// Batches with real workers over scripted cameras.
#pragma once

#include "WindowFixture.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>

// Does something before any event that waits already: before the signals of the workers, say.
class FirstEvent : public QObject
{
public:
    explicit FirstEvent(std::function<void()> action) : m_action(std::move(action))
    {
        QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority);
    }

protected:
    void customEvent(QEvent*) override { m_action(); }

private:
    const std::function<void()> m_action;
};

class BatchFixture : public WindowFixture
{
protected:
    ~BatchFixture() override;

    // Cameras of the model "Cam" that can be exported and take imported settings; found and ticked.
    void readyCameras(int count);
    // Any import of this file fits the scripted cameras.
    QString importFile();

    // Presses the button and gives the dialog's answer; returns when the batch is over.
    void runImport(const QString& file);
    void runExport(const QString& path);

    // Holds every job before it opens its camera, until they may go.
    void holdJobs();
    void letJobsGo();
    // Once all may go: also those that the window has let go. The next test's cameras are none of theirs.
    void waitForAllWorkers();
    void waitForHeldJobs(int count) { m_gate->waitForArrivals(count); }
    // Exports with all jobs begun before the first one ends: else a fast one may end the batch early.
    void runExportTogether(int count, const QString& path);
    // As soon as `ready` while the busy dialog is up: does `action`, once.
    void duringBatch(std::function<bool()> ready, std::function<void()> action);

    QString exported(const QByteArray& serial) const { return folder.filePath("Cam_" + serial + ".fpk"); }
    QStringList counts() const { return probe->counts(); }

    bool actionDone = false;

private:
    std::shared_ptr<tests::Gate> m_gate;
    QList<QPointer<QOperateThread>> m_seen; // in batches that duringBatch() was told of
};
