// One connection of the library: its requests one after the other, and the module or port that it has open.
#pragma once

#include "gentl_host/OpenModule.h"
#include "gentl_host/SerialPort.h"

namespace gentl_host
{

// What the one library of this process is, once it is loaded, depends on what it is loaded as.
struct Loaded
{
    explicit Loaded(const std::string& path) : modules(path), serialLibrary(path) {}

    Modules modules;
    SerialLibrary serialLibrary;
};

class Session
{
public:
    Session(Loaded& loaded, Channel requests, Channel loss);

    // Until the other end is closed; then what is open is closed too.
    void run();

private:
    void handle(const Bytes& message);
    Writer answerTo(Reader& request);
    Writer load();
    Writer look();
    void sendItem(const Writer& content);
    Writer open(Reader& request);
    Writer readRegisters(Reader& request);
    void finish(Outcome outcome, const Bytes& content);
    static Failure misunderstanding();
    static void check(const Reader& request);
    Writer answerAsSerial(Request what, Reader& request);
    Writer readSerial(Reader& request);

    Modules& m_modules;
    SerialLibrary& m_library;
    Channel m_requests;
    Caller m_call;
    OpenModule m_module;
    SerialPort m_serialPort;
};

} // namespace gentl_host
