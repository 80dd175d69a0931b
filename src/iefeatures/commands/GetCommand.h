// iefeatures get: what features of cameras are set to.
#pragma once

#include "iefeatures/cameras/LiveFeature.h"
#include "iefeatures/commands/CameraSearch.h"

#include <functional>
#include <string>
#include <vector>

namespace companion
{

class GetCommand : public Command
{
public:
    const char* name() const override { return "get"; }
    const char* summary() const override { return "Show what features of cameras are set to"; }
    void addOptions(CLI::App& app) override;
    int execute(World& world) override;

private:
    struct Reading
    {
        ListedCamera camera;
        QString problem; // why nothing could be asked, a sentence
        bool isUnreached = false;
        std::vector<LiveFeature> features;
        std::vector<QString> units; // of them
        std::vector<QString> access;
        bool isWhole() const;
    };
    Reading read(const ListedCamera& camera, const std::function<void()>& inHand) const;
    void tell(Console& console, const std::vector<Reading>& readings) const;

    std::vector<std::string> m_features;
    CameraSelection m_selection;
    SearchOptions m_search;
    bool m_json = false;
};

} // namespace companion
