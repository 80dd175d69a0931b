// The verdict on one plain feature of a features file.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/check/ImportSkips.h"

namespace companion
{

class PlainCheck
{
public:
    PlainCheck(FeatureReader& reader, ImportSkips& skips, CheckMode mode)
        : m_reader(reader), m_skips(skips), m_mode(mode)
    {}

    EntryCheck check(const ie::FeaturesContent::Entry& entry);

private:
    QString skipReason(const ie::FeaturesContent::Entry& entry);
    void plan(ie::FeatureKind kind, EntryCheck& check);
    void planUnread(KX_Status status, EntryCheck& check);
    void verify(ie::FeatureKind kind, EntryCheck& check);
    void verifyUnread(KX_Status status, EntryCheck& check);

    FeatureReader& m_reader;
    ImportSkips& m_skips;
    const CheckMode m_mode;
};

} // namespace companion
