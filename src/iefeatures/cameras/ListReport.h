// The cameras of a search, and what became of them, as people and scripts read it.
#pragma once

#include "iefeatures/cameras/LineWatch.h"
#include "iefeatures/console/Console.h"

#include <QDateTime>

namespace companion
{

// A line a camera below a line of titles.
QString listText(const std::vector<ListedCamera>& cameras);
// The fields of one camera's object.
Json listedJson(const ListedCamera& camera);

// "2026-01-02T03:04:05Z  changed   GigE  EMU-1 S1  127.0.0.11  free  (status was in use)"
QString eventText(const CameraEvent& event, const QDateTime& now);
// The fields of its object.
Json eventJson(const CameraEvent& event, const QDateTime& now);

} // namespace companion
