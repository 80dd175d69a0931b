// One feature of an open camera, of whatever kind it is, with what people call its values.
#pragma once

#include "iefeatures/cameras/FeatureReader.h"

#include <QString>

#include <optional>

namespace companion
{

struct LiveFeature
{
    QString name;
    std::optional<ie::FeatureKind> kind; // none: it was not read
    FeatureReader::Reading reading;
    QString value;   // "Mono8", "640", "true"; null: it was not read
    QString problem; // why not, a sentence

    bool isRead() const { return kind.has_value(); }
    // The number of an enumeration's entry; null for other kinds.
    QString number() const;
};

// Asks the camera. A command, or a register without a value, is told as a problem.
LiveFeature readLiveFeature(FeatureReader& reader, const QString& name);

// What people may write as a value of the feature: a number (hexadecimal with "0x", with the unit behind it),
// an entry's name or number, "true", "on", "yes", "1" and their opposites, a text.
struct MeantValue
{
    QString text;    // as a features file has it; null: it means nothing here
    QString problem; // then why, a sentence
};
MeantValue meantValue(FeatureReader& reader, const LiveFeature& feature, const QString& unit,
                      const QString& written);

// Writes what meantValue() has made of a value.
KX_Status writeLiveFeature(KX_HANDLE handle, const LiveFeature& feature, const QString& meant);

// What the description gives as the unit of the feature's numbers; empty: nothing. `description` is its text.
QString unitOf(const QByteArray& description, const QString& feature);
// The text of the camera's description; empty when it has none.
QByteArray descriptionText(KX_HANDLE handle);

} // namespace companion
