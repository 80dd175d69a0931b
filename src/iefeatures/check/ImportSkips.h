// What an import leaves alone on one camera, and why.
#pragma once

#include "iefeatures/cameras/FeatureReader.h"

#include <QString>

#include <optional>

namespace companion
{

// Jobs of the companion have no description at hand, so names alone decide: how the camera shows a feature
// counts in the program's window only, after an export of the same camera.
class ImportSkips
{
public:
    explicit ImportSkips(FeatureReader& reader) : m_reader(reader) {}

    // Null: it is not left alone. Asks the camera for its kind when a name depends on it.
    QString reason(const QString& name);

private:
    QString scanType();

    FeatureReader& m_reader;
    std::optional<QString> m_scanType; // as read once; null where it could not be
};

} // namespace companion
