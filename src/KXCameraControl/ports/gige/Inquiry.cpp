// Sending one question and collecting what comes back.
#include "KXCameraControl/ports/gige/Inquiry.h"

#include <algorithm>

namespace kx
{
namespace
{

void takeAnswer(std::vector<UdpSocket>& sockets, size_t socket, std::vector<Question>& questions,
                const AnswerHandler& take)
{
    gvcp::Bytes datagram;
    Endpoint from;
    if (sockets[socket].receive(datagram, Clock::now(), &from, nullptr) != Outcome::Done ||
        from.port != gvcp::kPort)
        return;
    const auto ack = gvcp::decodeAck(datagram.data(), datagram.size());
    if (!ack || !take(socket, from.address, *ack))
        return;
    for (Question& question : questions)
        if (question.socket == socket && question.address == from.address)
            question.isAnswered = true;
}

} // namespace

void askAll(std::vector<UdpSocket>& sockets, std::vector<Question>& questions, Patience patience,
            const AnswerHandler& take)
{
    const auto areAllAnswered = [&] {
        return std::all_of(questions.begin(), questions.end(),
                           [](const Question& question) { return question.isAnswered; });
    };
    for (unsigned left = patience.tries; left > 0 && !areAllAnswered(); --left) {
        const Clock::time_point deadline = Clock::now() + patience.perTry;
        for (const Question& question : questions)
            if (!question.isAnswered)
                sockets[question.socket].sendTo({question.address, gvcp::kPort}, question.packet);
        while (!areAllAnswered() && Clock::now() < deadline)
            if (const auto ready = UdpSocket::waitForAny(sockets, deadline))
                takeAnswer(sockets, *ready, questions, take);
    }
}

} // namespace kx
