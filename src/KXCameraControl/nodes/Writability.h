// Whether a description ever lets anyone write a node, whatever the camera says now.
#pragma once

#include "KXCameraControl/nodes/NodeTable.h"

#include <unordered_map>

namespace kx
{

// True for a node that has a way to a register that is written: no access mode on it rules writing out, each
// converter has a formula for it, and no node on it is broken. What a description says for a time only
// (locked, not available) does not count. A value that stands in the description itself is no way's end: what
// is written there stays in the host.
class Writability
{
public:
    bool isEver(const Node& node);

private:
    enum class Verdict
    {
        Open, // being worked out; met again, it is no way out of a circle
        Never,
        Sometimes
    };

    bool decide(const Node& node) const;
    bool isSometimes(const Node* target) const;

    std::unordered_map<const Node*, Verdict> m_verdicts;
};

} // namespace kx
