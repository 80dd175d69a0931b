// Which cameras a command is meant for: the options that every command with cameras has.
#pragma once

#include "iefeatures/cameras/CameraWord.h"

#include <QStringList>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace companion
{

class CameraSelection
{
public:
    using Words = std::vector<std::string>;
    static constexpr char kGroup[] = "Cameras"; // of the options that choose

    // --all, or any number of --serial, --name, --address, --mac and --model, one of which must be given; and
    // --expect.
    void addOptions(CLI::App& app);
    // The same, and one option more that chooses cameras, by serial numbers or words such as "name:Gate 3".
    void addOptions(CLI::App& app, const char* more, const char* help);
    // As addOptions(); none has to be given.
    void addOptional(CLI::App& app);
    // --serial, --name, --address, --mac and --model; without any of them every camera is meant. And
    // --expect.
    void addFilters(CLI::App& app);
    // --expect alone; every camera is meant.
    void addExpect(CLI::App& app);

    struct Choice
    {
        std::vector<ListedCamera> cameras; // in list order, each once
        QStringList misses;                // a sentence for each selector that no camera fits
        // Of a command that wants more of its cameras:
        QStringList lacks = {};    // a sentence for each that cannot do, however long one waits
        QStringList refusals = {}; // a sentence for each reason why nothing may be done
    };
    Choice choose(const std::vector<ListedCamera>& cameras) const;
    // One way more to choose; nobody has to be meant otherwise then.
    using Chooser = std::function<Choice(const std::vector<ListedCamera>& cameras)>;
    void chooseAlsoBy(const Chooser& other) { m_other = other; }
    // Whether it means whoever is there, so that one that is not there goes unnoticed.
    bool isOpen() const { return takesAll() || !m_models.empty(); }
    bool takesAll() const { return m_all || (m_isFilter && words().empty() && !m_other); }
    // Of options that may be left out (addOptional): nobody is meant.
    bool isEmpty() const { return !m_all && words().empty(); }
    // Of filters.
    bool isGiven() const { return !takesAll() || isCounted(); }
    bool isCounted() const { return m_expected.has_value(); } // by --expect

private:
    CLI::App& addChoice(CLI::App& app, const char* more, const char* help);
    void addSelectors(CLI::App& group, CLI::Option* all);
    void addCount(CLI::App& app);
    std::vector<CameraWord> words() const;

    bool m_all = false;
    bool m_isFilter = false;
    Words m_serials;
    Words m_names;
    Words m_addresses;
    Words m_macs;
    Words m_models;
    Words m_more;
    Chooser m_other; // empty: none
    std::optional<unsigned> m_expected;
};

} // namespace companion
