// A line of emulated cameras and its inventory.
#pragma once

#include "companion/ImportCompanion.h"
#include "iefeatures/line/Inventory.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <sstream>
#include <utility>

namespace tests
{

// Tells when a text is written, on the thread that writes it.
class Watch : public std::stringbuf
{
public:
    Watch(std::string text, std::function<void()> act) : m_text(std::move(text)), m_act(std::move(act)) {}

protected:
    int sync() override
    {
        if (m_act && str().find(m_text) != std::string::npos)
            std::exchange(m_act, nullptr)();
        return 0;
    }

private:
    const std::string m_text;
    std::function<void()> m_act;
};

class LineOfCameras : public ImportCompanion
{
protected:
    emu::EmulatedCamera& addNamed(const std::string& serial, const std::string& name,
                                  const std::string& model = "EMU-1")
    {
        return addCamera(serial, [&](emu::CameraConfig& config) {
            config.userName = name;
            config.model = model;
        });
    }

    std::string file() const { return path("hall.toml"); }

    Result line(Arguments arguments, const Arguments& more = {}) const
    {
        arguments.insert(arguments.begin(), "line");
        arguments.insert(arguments.begin() + 2, file());
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runInProcess(arguments);
    }
    Result init(const Arguments& more = {"--all"}) const { return line({"init", "--pause", "0"}, more); }
    Result check(const Arguments& more = {}) const { return line({"check"}, more); }

    companion::Inventory inventory() const
    {
        const auto reading = companion::readInventory(QString::fromStdString(file()));
        EXPECT_TRUE(reading.isGood());
        return reading.inventory;
    }

    // What is told of each camera, "Gate 1: in order".
    std::vector<std::string> states(const Arguments& more = {}) const
    {
        Arguments arguments{"--json"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        std::vector<std::string> found;
        for (const Json& object : objects(check(arguments)))
            if (object["kind"] == "line")
                found.push_back((object["name"].is_null() ? "-" : object["name"].get<std::string>()) + ": " +
                                object["state"].get<std::string>());
        return found;
    }

    // With a person at the terminal.
    static Result runAsked(const Arguments& arguments, const companion::Ask& ask)
    {
        std::ostringstream out, err;
        companion::Console console(out, err, false, false);
        companion::World world{console};
        world.ask = ask;
        const int code = companion::runCompanion(arguments, world);
        return {code, out.str(), err.str()};
    }

    // `act` as soon as `text` was told.
    static Result runWatched(const Arguments& arguments, const std::string& text,
                             const std::function<void()>& act)
    {
        Watch err(text, act);
        std::ostream errors(&err);
        errors << std::unitbuf; // so that each message is seen at once
        std::ostringstream out;
        companion::Console console(out, errors, false, false);
        const int code = companion::runCompanion(arguments, companion::World{console});
        return {code, out.str(), err.str()};
    }

    uint64_t writes()
    {
        uint64_t count = 0;
        for (const emu::EmulatedCamera& camera : cameras())
            count += camera.counters().settingWrites;
        return count;
    }
};

} // namespace tests
