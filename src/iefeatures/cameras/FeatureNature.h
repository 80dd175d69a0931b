// Tells a camera's settings from what is otherwise in it without anybody having set it.
#pragma once

#include "iefeatures/cameras/FeatureReader.h"
#include "iefeatures/cameras/NamedNatures.h"

#include <QMap>
#include <QString>

#include <map>

namespace companion
{

class FeatureNature
{
public:
    // The features whose values are known beside that of the feature in question, those of its file: each
    // with its text there, null where the file does not say it in one. A selector that is not among them may
    // stand anywhere, and an automatic function that they turn off moves nothing.
    using Settled = QMap<QString, QString>;

    // `isGigE`: the camera's transport. The reader must outlive this.
    FeatureNature(FeatureReader& reader, bool isGigE, const Settled& settled)
        : m_reader(reader), m_isGigE(isGigE), m_settled(settled)
    {}

    Nature of(const QString& feature);
    // Of a feature by the registers behind it, of whatever place.
    Nature ofBlock(const QString& feature);
    // Of some bytes of device memory that belong to a feature (empty: not known to which).
    Nature ofRegister(const QString& feature, qint64 address, qint64 length);

private:
    Nature ofFeature(const QString& feature, bool isPlaceKnown);
    Nature ofDescription(const QString& feature, bool isPlaceKnown);
    Nature ofFunctions(const QString& feature);
    QString movingSelector(const QString& feature, bool isPlaceKnown);
    bool canStandElsewhere(const QString& selector);
    bool isSwitchedOn(const QString& function);
    bool isOff(const QString& function, const QString& text);

    FeatureReader& m_reader;
    const bool m_isGigE;
    const Settled m_settled;
    std::map<QString, bool> m_switches; // those that were asked
};

} // namespace companion
