// Saving what a camera is set to into one of its own user sets (SFNC, "User Set Control"), so that it
// outlives a power cut.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <QString>

namespace companion
{

struct UserSet
{
    QString name;              // an entry of UserSetSelector, e.g. "UserSet1"; empty: none is saved
    bool isForStartUp = false; // the camera loads it when it is switched on
};

// Whether the camera has such a set now. Opens it for monitoring; false as well where it does not tell.
bool hasUserSet(const ListedCamera& camera, const QString& name);

// What has come of saving.
struct SavedSet
{
    enum class State
    {
        NotSaved,
        InDoubt, // no answer came
        Saved    // though perhaps not as what the camera starts with
    };
    State state = State::NotSaved;
    QString problem; // a sentence; empty: none
};

// Selects the set and saves into it; for start-up sets UserSetDefault (before SFNC 2.0:
// UserSetDefaultSelector) as well. The set stays selected. Takes the camera exclusively, blocks until the
// camera has answered.
SavedSet saveUserSet(const ListedCamera& camera, const UserSet& set);
// What has become of the set, as people are told: "UserSet1 was not saved: ..."
QString savingText(const QString& set, const SavedSet& saved);

// Selects the set and loads it: the camera is as it is when it starts with it. Otherwise as saveUserSet();
// gives what went wrong as a sentence, or an empty text.
QString loadUserSet(const ListedCamera& camera, const QString& set);
// The camera loads the set when it is switched on; saves nothing. As loadUserSet() otherwise.
QString startWithUserSet(const ListedCamera& camera, const QString& set);

} // namespace companion
