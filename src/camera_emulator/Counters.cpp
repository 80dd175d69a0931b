#include "camera_emulator/Counters.h"

#include <nlohmann/json.hpp>

namespace emu
{

std::string toJson(const Counters& counters)
{
    return nlohmann::ordered_json{{"requests", counters.requests()},
                                  {"discovery", counters.discovery},
                                  {"readReg", counters.readReg},
                                  {"writeReg", counters.writeReg},
                                  {"readMem", counters.readMem},
                                  {"writeMem", counters.writeMem},
                                  {"forceIp", counters.forceIp},
                                  {"restarts", counters.restarts},
                                  {"unknown", counters.unknown},
                                  {"registersRead", counters.registersRead},
                                  {"registersWritten", counters.registersWritten},
                                  {"bytesRead", counters.bytesRead},
                                  {"bytesWritten", counters.bytesWritten},
                                  {"controlRequests", counters.controlRequests},
                                  {"settingWrites", counters.settingWrites},
                                  {"refused", counters.refused},
                                  {"pending", counters.pending},
                                  {"malformed", counters.malformed},
                                  {"lost", counters.lost},
                                  {"heartbeatsExpired", counters.heartbeatsExpired}}
        .dump();
}

} // namespace emu
