// The workers' signals as JSON, one object a line, for scripts.
#pragma once

#include "iefeatures/Console.h"
#include "iefeatures/JobBatch.h"

namespace companion
{

class SignalPrinter : public JobListener
{
public:
    explicit SignalPrinter(Console& console) : m_console(console) {}

    void begin(const Camera& camera, unsigned type) override;
    void info(const Camera& camera, const QString& message, bool isFailure) override;
    void end(const Camera& camera, unsigned type, const QString& path) override;

private:
    Console& m_console;
};

} // namespace companion
