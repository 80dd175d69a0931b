// One job after the other, each with another one of its requests going wrong.
#pragma once

#include "camera_emulator/Accident.h"
#include "companion/CompanionFixture.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tests
{

// What happens at a request: one of the emulator's mishaps, or more than that.
struct Trouble
{
    enum class Kind
    {
        Mishap,
        Silent,   // it answers no more
        Stolen,   // another host takes control
        Rebooted, // it is gone for a moment, and is as it was before the job: settings and control
        Moved     // it goes on at another address
    };
    std::string name;
    Kind kind = Kind::Mishap;
    emu::Mishap mishap = emu::Mishap::RequestLost;
    std::chrono::milliseconds patience; // for which a job may wait because of it
};
const std::vector<Trouble>& troubles();

// The settings of an emulated camera as they lie in its memory.
class Settings
{
public:
    static Settings of(const emu::Shell& camera);
    void putInto(emu::Shell& camera) const;
    bool operator==(const Settings& other) const { return m_bytes == other.m_bytes; }
    // Addresses of the words that differ.
    std::vector<uint64_t> differences(const Settings& other) const;

private:
    emu::Bytes m_bytes;
};

// A job as the sweep runs it.
struct SweptJob
{
    std::string name;
    std::function<void()> prepare; // what it finds, before each run
    std::function<Result()> run;
    // What is wrong about how it has ended, a sentence each.
    std::function<std::vector<std::string>(const Result&)> objections;
    // The same of the run behind one that has failed, which goes on with what that has left. Empty: each run
    // begins anew.
    std::function<std::vector<std::string>(const Result&)> objectionsToNext = {};
    // The camera was without power, and is off. Empty: it comes back with the settings from before the job.
    std::function<void()> lose = {};
    std::chrono::milliseconds waiting{0}; // that the job itself may do for a camera that is gone
    size_t filesOfReturn = 0;             // that the emulated line opens whenever the camera comes back
};

class Sweep
{
public:
    explicit Sweep(emu::Shell& camera)
        : m_camera(camera), m_onNetwork(dynamic_cast<emu::EmulatedCamera*>(&camera))
    {}

    // Every so many requests, so that about `runs` runs are made of each trouble (0: one of each third one);
    // all with KX_SWEEP=all, every n-th with KX_SWEEP=n.
    void over(const SweptJob& job, size_t runs);
    // "RequestLost: 24 tried, 24 well"
    void printSums() const;

private:
    uint64_t countRequests(const SweptJob& job);
    void runOnce(const SweptJob& job, const Trouble& trouble, uint64_t request);
    void awaitFreeCamera();

    emu::Shell& m_camera;
    emu::EmulatedCamera* const m_onNetwork; // null: on another line, whose control is not told
    std::chrono::milliseconds m_ownTime{0};
    std::map<std::string, std::map<int, int>> m_endings; // by trouble: how often each exit code
    int m_runs = 0;
};

} // namespace tests
