// Serial libraries of grabbers for one test: a folder with copies of ours, whose ports are terminals of
// emulated cameras.
#pragma once

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

// While it lives, nothing but its folder is searched for serial libraries.
class ClserStage
{
public:
    ClserStage()
    {
        static std::atomic<int> count{0};
        m_folder = std::filesystem::temp_directory_path() /
                   ("clser_" + std::to_string(getpid()) + "_" + std::to_string(++count));
        std::filesystem::create_directories(m_folder);
        setenv("CLSERIALPATH", m_folder.c_str(), 1);
        unsetenv("CLSEREMU_PORTS");
        unsetenv("CLSEREMU_FAULTS");
    }
    ~ClserStage()
    {
        unsetenv("CLSERIALPATH");
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    ClserStage(const ClserStage&) = delete;
    ClserStage& operator=(const ClserStage&) = delete;

    // Its path. `kind`: "emu", "plain" (without what a library may lack), "old" (Camera Link 1.0).
    std::string addLibrary(const std::string& kind = "emu")
    {
        const auto file = m_folder / ("clser" + kind + ".so");
        std::filesystem::copy_file(CLSER_LIBRARIES "/clser" + kind + ".so", file);
        return std::filesystem::canonical(file).string();
    }
    std::string addFile(const std::string& name, const std::string& content)
    {
        const auto file = m_folder / name;
        std::ofstream(file, std::ios::binary) << content;
        return std::filesystem::canonical(file).string();
    }

    // For helpers that are started from now on, and their libraries have one list of ports.
    void addPort(const std::string& terminal)
    {
        m_ports += (m_ports.empty() ? "" : ",") + terminal;
        setenv("CLSEREMU_PORTS", m_ports.c_str(), 1);
    }
    static void setFaults(const std::string& faults) { setenv("CLSEREMU_FAULTS", faults.c_str(), 1); }

private:
    std::filesystem::path m_folder;
    std::string m_ports;
};
