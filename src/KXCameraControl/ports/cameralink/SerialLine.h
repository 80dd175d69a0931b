// A serial line as Camera Link cameras hang on it: 8 data bits, no parity, one stop bit, no handshake.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace kx
{

// One caller at a time.
class SerialLine
{
public:
    using Clock = std::chrono::steady_clock;
    enum class Outcome
    {
        Done,
        TimedOut,
        Gone,  // the line left, or hung up
        Failed // the operating system or the library refused; errorText() says why
    };

    virtual ~SerialLine() = default;

    // Takes the line for this process alone, at 9,600 baud. KX_E_CONTROL_REFUSED: another program has it.
    // KX_E_NO_DEVICE: there is none of that name. KX_E_NETWORK: the operating system or the grabber's library
    // refuses it, or it is none.
    virtual KX_Status open() = 0;
    virtual void close() = 0; // idempotent
    virtual bool isOpen() const = 0;

    // What has arrived and was not read is forgotten. False: the line has no such rate.
    virtual bool setBaudRate(uint32_t baud) = 0;
    virtual Outcome write(const uint8_t* data, size_t size, Clock::time_point deadline) = 0;
    // At least one byte of `capacity`, as soon as there is any.
    virtual Outcome read(uint8_t* data, size_t capacity, size_t& size, Clock::time_point deadline) = 0;

    virtual std::string name() const = 0;
    virtual std::string errorText() const = 0;
    // Why a line that is Gone has gone: a clause.
    virtual std::string lossText() const { return name() + " is gone"; }

protected:
    // Another look at the same line, to see who is there, takes it for moments only.
    static constexpr std::chrono::milliseconds kLookPatience{500};
    static constexpr std::chrono::milliseconds kLookPause{10};
};

} // namespace kx
