// The verdicts on the registers of one block of a features file.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/check/ImportSkips.h"

namespace companion
{

class RegisterCheck
{
public:
    // `isGigE`: the camera's transport, on which files have words of 4 bytes the other way round.
    RegisterCheck(FeatureReader& reader, ImportSkips& skips, CheckMode mode, bool isGigE)
        : m_reader(reader), m_skips(skips), m_mode(mode), m_isGigE(isGigE)
    {}

    // One verdict a register, or one on the whole block. Stops at a line that failed.
    std::vector<EntryCheck> check(const ie::ComplexFeature& block);

private:
    struct Block;
    bool isThereAllTheSame(const Block& block);
    EntryCheck checkEntry(const Block& block, const ie::RegisterValue& value);
    void checkUnaligned(const Block& block, const ie::RegisterValue& value, EntryCheck& check);
    void compare(const Block& block, const ie::RegisterValue& value, EntryCheck& check);

    FeatureReader& m_reader;
    ImportSkips& m_skips;
    const CheckMode m_mode;
    const bool m_isGigE;
    QString m_brokenBlock; // at which an import would have ended
};

} // namespace companion
