// What the environment says of where cameras are looked for, and what came of that.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <QStringList>

#include <vector>

namespace companion
{

// A sentence for each value of KX_CAMERA_INTERFACES and KX_CAMERA_ADDRESSES that nobody can follow.
QStringList searchObjections();

QString noAnswerAt(const QString& address); // a sentence
// The addresses of KX_CAMERA_ADDRESSES that none of the cameras answered from.
QStringList silentAddresses(const std::vector<ListedCamera>& cameras);

} // namespace companion
