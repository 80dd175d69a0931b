// The names that tell what a feature is, whatever a camera's description says: all of them stand here.
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace companion
{

// What a feature is when it is no setting, and why. As the rules of names and descriptions have it,
// somebody's setting wherever nothing speaks against it.
struct Nature
{
    enum class Kind
    {
        Setting,
        State,    // nobody ever writes it, it tells one unit from another, or it is a window of data
        Session,  // it is otherwise while a program streams from the camera
        Automatic // an automatic function moves it now
    };
    Kind kind = Kind::Setting;
    QString reason; // of what is no setting
};

// A State or a Session by its name alone; a Setting otherwise.
Nature natureOfName(const QString& feature);
// What every GigE Vision camera has, or has not, at that address, in the same way.
Nature natureOfGigEAddress(qint64 address);

// The switches of the automatic functions that, by SFNC, may move a feature of this name ("ExposureAuto" for
// "ExposureTime"); empty for most.
QStringList automaticFunctionsOf(const QString& feature);
// Whether a switch that locks the feature moves it, as far as names tell: "FocusAuto" does "FocusPosition",
// and not "FocusMode" or "FocusAutoLimit", which are people's.
bool isMovedByLock(const QString& feature, const QString& lock);

// Features of the standard naming (SFNC) and of common practice that change by themselves: temperatures,
// counters and timers, timestamps, running times, states of lines and links.
const QStringList& changingByThemselves();
// Those that natureOfName() takes for a Session.
QStringList sessionPatterns();

} // namespace companion
