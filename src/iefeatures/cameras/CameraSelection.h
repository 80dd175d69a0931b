// Which cameras a command is meant for: the options that every command with cameras has.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <QStringList>

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace companion
{

class CameraSelection
{
public:
    // --all, or any number of --serial, --name, --address and --model. One of them must be given.
    void addOptions(CLI::App& app);

    struct Choice
    {
        std::vector<ListedCamera> cameras; // in list order, each once
        QStringList misses;                // a sentence for each selector that no camera fits
    };
    Choice choose(const std::vector<ListedCamera>& cameras) const;

    using Words = std::vector<std::string>;
    static Choice bySerial(const Words& serials, const std::vector<ListedCamera>& cameras);

private:
    bool m_all = false;
    Words m_serials;
    Words m_names;
    Words m_addresses;
    Words m_models;
};

} // namespace companion
