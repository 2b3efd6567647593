#include "server/reply_queue.hpp"

namespace vorsim::server {
namespace {

using Way = faults::Delivery::Way;

constexpr std::size_t most_late = 1000;

} // namespace

ReplyQueue::ReplyQueue(sockets::Loop& loop, const Managers& served) : managers_(served)
{
    loop.at([this] { return late_.empty() ? std::nullopt : std::optional(late_.begin()->first); },
            [this] { send_due(); });
}

bool ReplyQueue::post(const PendingReply& reply)
{
    const sockets::Endpoint* const endpoint = managers_.endpoint(reply.asker.sap);
    if (endpoint == nullptr) {
        return false;
    }
    VOR_IPC_HANDLE* const handle = endpoint->handle();
    VORINFRA_MESSAGE request;
    request.source = reply.asker.client;
    request.id = reply.asker.request_id;
    request.sequence = reply.asker.sequence;
    request.answer_wanted = 1;
    const auto answer = [&] {
        return vorinfra_answer(handle, &request, reply.answer_id, reply.bytes.data(),
                               static_cast<vor_uint16>(reply.bytes.size())) == 0;
    };
    switch (reply.way) {
    case Way::refused:
        return vorinfra_refuse(handle, &request) == 0;
    case Way::twice:
        return answer() && answer();
    default:
        return answer();
    }
}

bool ReplyQueue::send_now(const PendingReply& reply)
{
    const bool sent = post(reply);
    if (const auto held = held_.extract(reply.asker.sap)) {
        post(held.mapped());
    }
    return sent;
}

ReplyQueue::Sent ReplyQueue::send_or_hold(PendingReply reply)
{
    if (reply.way == Way::after_the_next && !held_.contains(reply.asker.sap)) {
        held_.emplace(reply.asker.sap, std::move(reply));
        return Sent::done;
    }
    return send_now(reply) ? Sent::done : Sent::gone;
}

ReplyQueue::Sent ReplyQueue::send(const Asker& asker, const gateway::Decision& decision,
                                  const faults::Delivery& delivery, Time now)
{
    if (!decision.answered || delivery.way == Way::never || delivery.way == Way::dying) {
        return Sent::done;
    }
    PendingReply reply{asker, decision.answer_id, decision.answer, delivery.way};
    if (delivery.wait == faults::Milliseconds(0)) {
        return send_or_hold(std::move(reply));
    }
    if (late_.size() >= most_late) {
        return send_or_hold(std::move(reply)) == Sent::gone ? Sent::gone : Sent::crowded;
    }
    late_.emplace(now + delivery.wait, std::move(reply));
    return Sent::done;
}

void ReplyQueue::send_due()
{
    while (!late_.empty() && late_.begin()->first <= std::chrono::steady_clock::now()) {
        send_or_hold(std::move(late_.extract(late_.begin()).mapped()));
    }
}

void ReplyQueue::drop(std::uint16_t sap)
{
    held_.erase(sap);
    std::erase_if(late_, [sap](const auto& each) { return each.second.asker.sap == sap; });
}

} // namespace vorsim::server
