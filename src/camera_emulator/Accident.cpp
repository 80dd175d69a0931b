#include "camera_emulator/Accident.h"

#include <algorithm>

namespace emu
{
namespace
{

constexpr size_t kHeader = 8; // of an answer
constexpr size_t kLength = 4;
constexpr size_t kId = 6;
constexpr size_t kWord = 4;

void resize(Bytes& answer, size_t size, bool isBigEndian)
{
    answer.resize(size, 0xA5);
    if (size < kHeader)
        return;
    const size_t payload = size - kHeader;
    answer[kLength + (isBigEndian ? 0 : 1)] = static_cast<uint8_t>(payload >> 8);
    answer[kLength + (isBigEndian ? 1 : 0)] = static_cast<uint8_t>(payload);
}

// As an application would be hit by another device's packets: any bytes, the same at each run.
void scramble(Bytes& answer)
{
    uint32_t state = 0x2545F491;
    for (uint8_t& byte : answer) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
    }
}

} // namespace

void befall(const Accident& accident, bool isBigEndian, std::vector<Reply>& replies)
{
    if (replies.empty())
        return;
    Reply& answer = replies.back();
    switch (accident.mishap) {
    case Mishap::RequestLost:
    case Mishap::Refused:
    case Mishap::Busy:
    case Mishap::DeafFromThenOn:
        break; // met before there was an answer
    case Mishap::AnswerLost:
    case Mishap::PendingForEver:
        replies.pop_back();
        break;
    case Mishap::AnswerLate:
        answer.due += accident.lateness;
        break;
    case Mishap::AnswerTwice:
        replies.push_back(Reply(answer));
        break;
    case Mishap::AnswerWithOtherId:
        answer.bytes[kId] ^= 0x55;
        break;
    case Mishap::AnswerShort:
        resize(answer.bytes, answer.bytes.size() - std::min(kWord, answer.bytes.size()), isBigEndian);
        break;
    case Mishap::AnswerLong:
        resize(answer.bytes, answer.bytes.size() + kWord, isBigEndian);
        break;
    case Mishap::AnswerGarbage:
        scramble(answer.bytes);
        break;
    }
}

} // namespace emu
