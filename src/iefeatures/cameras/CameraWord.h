// One camera by one word: "serial:0123", "name:Gate 3", "address:10.0.0.7", "mac:02:00:00:00:00:01".
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace companion
{

// What a camera is chosen by.
struct CameraTrait
{
    const char* prefix; // of the word
    const char* kind;   // "serial number"
    QString ListedCamera::*field;
};
extern const CameraTrait kBySerial;
extern const CameraTrait kByName;
extern const CameraTrait kByAddress;
extern const CameraTrait kByMac;
extern const CameraTrait kByModel; // has no word

// Whether the camera's field is that value: exactly; MAC addresses in either case, with "-" or ":".
bool fits(const ListedCamera& camera, const CameraTrait& trait, const QString& value);

struct CameraWord
{
    const CameraTrait* trait;
    QString value; // may be empty

    bool fits(const ListedCamera& camera) const { return companion::fits(camera, *trait, value); }
    QString missing() const; // a sentence
    // A sentence that names the ways to tell the cameras apart.
    QString ambiguous(const std::vector<ListedCamera>& cameras) const;
};
// Nothing for a word without such a prefix.
std::optional<CameraWord> cameraWord(const std::string& word);
// A word without such a prefix is a serial number.
CameraWord cameraWordOrSerial(const std::string& word);

} // namespace companion
