// Applies a features file to a camera, in cycles of four passes: Boolean features, enumerations, numbers and
// texts, registers. Cycles repeat until one changes and fails nothing, eleven at most.
#pragma once

#include "jobs/file/FeaturesFile.h"
#include "jobs/import/RegisterImport.h"
#include "jobs/nodes/FeatureKind.h"

#include <functional>
#include <vector>

namespace ie
{

class FeaturesImport
{
public:
    using IsSkipped = std::function<bool(const QString& name)>;

    // `isSkipped`: what is left alone, protected names included.
    FeaturesImport(NodeAccess& camera, bool isGigE, const IsSkipped& isSkipped)
        : m_camera(camera), m_registers(camera, isGigE), m_isSkipped(isSkipped)
    {}

    // False: it gave up. What still fails in the last cycle is let go as a success. Meant.
    bool ApplyFeatures(const FeaturesContent& content);

private:
    struct Plain
    {
        FeatureKind kind;
        PlainFeature feature;
    };

    void take(const FeaturesContent::Entry& entry);
    bool applyCycle();
    bool applyPass(int pass);
    bool giveUp(const PlainFeature& at);
    KX_Status setFeatureIntoDevice(const Plain& plain);

    NodeAccess& m_camera;
    RegisterImport m_registers;
    IsSkipped m_isSkipped;
    std::vector<Plain> m_plain; // those that may be applied, in the file's order
    std::vector<ComplexFeature> m_blocks;
    ImportCycle m_cycle;
};

} // namespace ie
