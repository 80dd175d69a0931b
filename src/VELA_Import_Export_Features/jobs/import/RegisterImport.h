// The fourth pass of an import: registers block by block, each read before it is written.
#pragma once

#include "jobs/file/FeaturesFile.h"
#include "jobs/nodes/NodeAccess.h"
#include "jobs/nodes/RegisterWords.h"

namespace ie
{

// What one cycle of an import has come to.
struct ImportCycle
{
    int number = 0; // from 0
    int failed = 0;
    int pending = 0; // writes that were needed, of plain features those that failed
};

class RegisterImport
{
public:
    RegisterImport(NodeAccess& camera, bool isGigE) : m_camera(camera), m_isGigE(isGigE) {}

    // Counts in `cycle`. False: the import is over.
    bool apply(const ComplexFeature& block, ImportCycle& cycle);

private:
    bool canBePrepared(const ComplexFeature& block, const RegisterWords& words) const;
    bool applyEntries(const ComplexFeature& block, RegisterWords& words, ImportCycle& cycle);
    bool SetValueFromReg(const ComplexFeature& block, const RegisterValue& entry, RegisterWords& words);
    bool write(const ComplexFeature& block, qint64 address, RegisterWords& words, int cycle);

    NodeAccess& m_camera;
    const bool m_isGigE;
};

} // namespace ie
