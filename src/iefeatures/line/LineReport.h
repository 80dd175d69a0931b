// What a check of a line is told as: to people, to scripts, and in files for those who watch over it.
#pragma once

#include "iefeatures/console/ReportStyle.h"
#include "iefeatures/line/LineCheck.h"

#include <QByteArray>

#include <optional>

namespace companion
{

// A line a camera, the numbers of each state, then what is not in order.
QString lineText(const LineCheck& check, const ReportStyle& style);
// "3 cameras: 2 in order, 1 missing"
QString lineCounts(const LineCheck& check);

// The fields of one camera's object.
Json lineJson(const LineCameraCheck& one);

// "address: 10.0.0.9, should be 10.0.0.7"; the reason and what the camera's features differ in as well.
QStringList lineProblems(const LineCameraCheck& one);
// What differs and does not count: "session: 3, automatic: 1", or that nothing was compared; empty: nothing.
QString lineAsides(const LineCameraCheck& one);

// XML as JUnit has it: a test suite a line, a test case a camera; what could not be judged is an error, what
// is not in order a failure.
QByteArray lineJunit(const Inventory& inventory, const LineCheck& check);

// Prometheus' text format. Without a check: the run has failed; `line` is its name as far as it is known.
QByteArray lineMetrics(const QString& line, const std::optional<LineCheck>& check, const QDateTime& now);
// Writes them in one step, readable for everybody. The cause as a printable sentence, or an empty text.
QString writeMetrics(const QString& path, const QByteArray& text);

// One page that needs nothing else, for a browser and for paper.
QByteArray linePage(const Inventory& inventory, const LineCheck& check);

} // namespace companion
