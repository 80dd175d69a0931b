// Commands whose camera falls silent behind one of their requests.
#pragma once

#include "companion/ImportCompanion.h"

#include <nlohmann/json.hpp>

#include <functional>

namespace tests
{

// One thing that a command writes.
struct WatchedWrite
{
    std::string feature;
    std::function<void()> takeBack;
    std::function<bool()> isWritten; // as the camera has it
};

class DoubtfulWrites : public ImportCompanion
{
protected:
    // Runs the command, which writes JSON lines, with the camera silent behind its last request, the one
    // before, and so on, until the write is told to be in doubt: it has to be told so when the camera has it
    // and nobody knows.
    void expectDoubt(emu::EmulatedCamera& camera, const Arguments& command, const WatchedWrite& write)
    {
        const auto run = [&](const emu::Faults& faults) {
            write.takeBack();
            camera.setFaults(faults);
            const Result result = runInProcess(command);
            camera.setFaults({});
            camera.releaseControl();
            return result;
        };
        run({}); // which fetches the description, once and for all
        camera.resetCounters();
        ASSERT_EQ(run({}).code, 0);
        ASSERT_TRUE(write.isWritten());
        const emu::Counters counters = camera.counters();
        const auto inAll = unsigned(counters.requests() - counters.discovery);
        for (unsigned request = inAll; request > 0; --request) {
            emu::Faults faults;
            faults.accident = emu::Accident{emu::Mishap::DeafFromThenOn, request};
            const Result result = run(faults);
            const nlohmann::json object = lastObject(result, "result");
            if (object.contains("in_doubt"))
                return expectTold(write, result, object["in_doubt"]);
            EXPECT_EQ(result.err.find("EMU-1 S1: " + write.feature + ": ") != std::string::npos,
                      write.isWritten())
                << "request " << request << " of " << inAll << '\n'
                << result.err;
        }
        ADD_FAILURE() << "never in doubt";
    }

private:
    void expectTold(const WatchedWrite& write, const Result& result, const nlohmann::json& doubts)
    {
        EXPECT_EQ(result.code, 1);
        EXPECT_TRUE(write.isWritten());
        EXPECT_EQ(doubts, nlohmann::json{write.feature});
        EXPECT_THAT(result.err, ::testing::HasSubstr("EMU-1 S1: may have been changed, as no answer came: " +
                                                     write.feature + '\n'));
        EXPECT_EQ(nlohmann::json::parse(lastAuditLine())["in_doubt"][0]["feature"], write.feature);
    }
};

} // namespace tests
