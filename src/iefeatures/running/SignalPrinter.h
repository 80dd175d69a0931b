// The workers' signals as JSON, one object a line, for scripts.
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
    Console& m_console;
};

} // namespace companion
