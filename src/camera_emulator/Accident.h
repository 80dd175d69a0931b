// What befalls one single request, over every transport.
#pragma once

#include "camera_emulator/Reply.h"

#include <chrono>
#include <cstdint>
#include <vector>

namespace emu
{

enum class Mishap
{
    RequestLost, // not carried out
    AnswerLost,  // carried out
    AnswerLate,
    AnswerTwice,
    AnswerWithOtherId,
    AnswerShort, // four bytes less, its length field adjusted; of one without payload the header is cut
    AnswerLong,  // four bytes more, its length field adjusted
    AnswerGarbage,
    Refused,        // GenericError; not carried out
    Busy,           // not carried out
    PendingForEver, // this and every later command: PENDING_ACK, and no answer behind it
    DeafFromThenOn, // carried out, as are later ones: no answer to this one or to any later one
};
constexpr Mishap kMishaps[] = {
    Mishap::RequestLost,       Mishap::AnswerLost,  Mishap::AnswerLate,     Mishap::AnswerTwice,
    Mishap::AnswerWithOtherId, Mishap::AnswerShort, Mishap::AnswerLong,     Mishap::AnswerGarbage,
    Mishap::Refused,           Mishap::Busy,        Mishap::PendingForEver, Mishap::DeafFromThenOn,
};

struct Accident
{
    Mishap mishap = Mishap::RequestLost;
    unsigned request = 1; // the n-th register command from now
    std::chrono::milliseconds lateness{300};
};

// What has become of the replies to the request; `replies` is of GVCP or GenCP, whose answers have their
// length at byte 4 and their id at byte 6. `isBigEndian`: of the length.
void befall(const Accident& accident, bool isBigEndian, std::vector<Reply>& replies);

} // namespace emu
