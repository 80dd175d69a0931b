// The workers' signals as objects for scripts. A path is not among them: what a job calls its file when it
// ends may not be there, or not under that name, in the end.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/running/JobBatch.h"

namespace companion
{

class SignalPrinter : public JobListener
{
public:
    explicit SignalPrinter(Console& console) : m_console(console) {}

    void begin(const ListedCamera& camera, unsigned type) override;
    void info(const ListedCamera& camera, const QString& message, bool isFailure) override;
    void end(const ListedCamera& camera, unsigned type, const QString& path) override;

private:
    void tell(const char* signal, const ListedCamera& camera, const Json& fields);

    Console& m_console;
};

} // namespace companion
