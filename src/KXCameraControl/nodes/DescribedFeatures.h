// What a description tells of its features without a camera: worked out when it is asked for the first time.
#pragma once

#include "KXCameraControl/nodes/FeatureLinks.h"
#include "KXCameraControl/nodes/RegisterMap.h"
#include "KXCameraControl/nodes/Writability.h"

#include <optional>

namespace kx
{

class DescribedFeatures
{
public:
    // The table must outlive it and not change any more.
    explicit DescribedFeatures(const NodeTable& table) : m_table(table) {}

    Writability& writability() { return m_writability; }
    const FeatureLinks& links()
    {
        if (!m_links)
            m_links.emplace(m_table);
        return *m_links;
    }
    const RegisterMap& registers()
    {
        if (!m_registers)
            m_registers.emplace(m_table, links());
        return *m_registers;
    }

private:
    const NodeTable& m_table;
    Writability m_writability;
    std::optional<FeatureLinks> m_links;
    std::optional<RegisterMap> m_registers;
};

} // namespace kx
