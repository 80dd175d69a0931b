// One connection of the library: its requests one after the other, and the module that it has open.
#pragma once

#include "gentl_host/OpenModule.h"

namespace gentl_host
{

class Session
{
public:
    Session(Modules& modules, Channel requests, Channel loss);

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

    Modules& m_modules;
    Channel m_requests;
    Caller m_call;
    OpenModule m_module;
};

} // namespace gentl_host
