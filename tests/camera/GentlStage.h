// GenTL producers for one test: a folder with copies of the emulator's producer, and cameras behind them.
#pragma once

#include "camera_emulator/GrabberCamera.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

// While it lives, nothing but its folder is searched for producers.
class GentlStage
{
public:
    GentlStage()
    {
        static std::atomic<int> count{0};
        m_folder = std::filesystem::temp_directory_path() /
                   ("gentl_" + std::to_string(getpid()) + "_" + std::to_string(++count));
        std::filesystem::create_directories(m_folder);
        // Helpers that crash shall do so at once, also where a sanitizer would first write it all down.
        for (const char* sanitizer : {"ASAN_OPTIONS", "TSAN_OPTIONS"}) {
            const char* const options = std::getenv(sanitizer);
            setenv(sanitizer, ((options ? options : "") + std::string(":handle_segv=0")).c_str(), 1);
        }
        setenv("KX_CAMERA_INTERFACES", "none", 1);
        setenv("GENICAM_GENTL64_PATH", m_folder.c_str(), 1);
        for (const char* name : {"KX_GENTL_HOST", "KX_GENTL_LOG", "KX_GENTL_MEMORY", "KX_GENTL_SETTINGS",
                                 "KX_CAMERA_SERIAL_PORTS", "CAMERA_EMULATOR_GENTL",
                                 "CAMERA_EMULATOR_GENTL_FAULTS", "CAMERA_EMULATOR_GENTL_HIDDEN"})
            unsetenv(name);
    }
    ~GentlStage()
    {
        unsetenv("GENICAM_GENTL64_PATH");
        m_cameras.clear();
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    GentlStage(const GentlStage&) = delete;
    GentlStage& operator=(const GentlStage&) = delete;

    const std::filesystem::path& folder() const { return m_folder; }

    // The path that the library has for it.
    std::string addProducer(const std::string& name = "emulated")
    {
        const auto file = m_folder / (name + ".cti");
        std::filesystem::copy_file(CAMERA_EMULATOR_GENTL, file);
        return std::filesystem::canonical(file).string();
    }
    std::string addFile(const std::string& name, const std::string& content)
    {
        const auto file = m_folder / name;
        std::ofstream(file, std::ios::binary) << content;
        return std::filesystem::canonical(file).string();
    }

    // Behind the producer of that name; without one, behind all.
    emu::GrabberCamera& addCamera(const std::string& serial, const std::string& producer = {},
                                  emu::GrabberConfig grabber = {}, emu::CameraConfig config = {})
    {
        config.serial = serial;
        grabber.socket = (m_folder / (serial + ".socket")).string();
        m_cameras.push_back(std::make_unique<emu::GrabberCamera>(config, grabber));
        EXPECT_TRUE(m_cameras.back()->start());
        m_sockets +=
            (m_sockets.empty() ? "" : ",") + (producer.empty() ? "" : producer + ":") + grabber.socket;
        setenv("CAMERA_EMULATOR_GENTL", m_sockets.c_str(), 1);
        return *m_cameras.back();
    }
    // For helpers that are started from now on.
    static void setFaults(const std::string& faults)
    {
        setenv("CAMERA_EMULATOR_GENTL_FAULTS", faults.c_str(), 1);
    }

private:
    std::filesystem::path m_folder;
    std::vector<std::unique_ptr<emu::GrabberCamera>> m_cameras;
    std::string m_sockets;
};
