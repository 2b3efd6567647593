#include "server/reply_queue.hpp"

namespace vorsim {
namespace {

using Way = faults::Delivery::Way;

constexpr std::size_t most_late = 1000;

} // namespace

Outbox::Outbox(Loop& loop, const Managers& endpoints) : managers_(endpoints)
{
    loop.at([this] { return late_.empty() ? std::nullopt : std::optional(late_.begin()->first); },
            [this] { send_due(); });
}

bool Outbox::post(const Parcel& parcel)
{
    const Inlet* const inlet = managers_.inlet(parcel.sap);
    if (inlet == nullptr) {
        return false;
    }
    VOR_IPC_HANDLE* const endpoint = inlet->handle();
    VORINFRA_MESSAGE request;
    request.source = parcel.client;
    request.id = parcel.request_id;
    request.sequence = parcel.sequence;
    request.answer_wanted = 1;
    const auto answer = [&] {
        return vorinfra_answer(endpoint, &request, parcel.answer_id, parcel.bytes.data(),
                               static_cast<vor_uint16>(parcel.bytes.size())) == 0;
    };
    switch (parcel.way) {
    case Way::refused:
        return vorinfra_refuse(endpoint, &request) == 0;
    case Way::twice:
        return answer() && answer();
    default:
        return answer();
    }
}

bool Outbox::send_now(const Parcel& parcel)
{
    const bool sent = post(parcel);
    if (const auto held = held_.extract(parcel.sap)) {
        post(held.mapped());
    }
    return sent;
}

Outbox::Sent Outbox::send_or_hold(Parcel parcel)
{
    if (parcel.way == Way::behind_the_next && !held_.contains(parcel.sap)) {
        held_.emplace(parcel.sap, std::move(parcel));
        return Sent::done;
    }
    return send_now(parcel) ? Sent::done : Sent::gone;
}

Outbox::Sent Outbox::send(std::uint16_t sap, const VORINFRA_MESSAGE& request, const Judgement& judgement,
                          const faults::Delivery& delivery, Time now)
{
    if (!judgement.answered || delivery.way == Way::never || delivery.way == Way::dying) {
        return Sent::done;
    }
    Parcel parcel{sap,         request.source, request.sequence, request.id, judgement.answer_id, judgement.answer,
                  delivery.way};
    if (delivery.wait == faults::Milliseconds(0)) {
        return send_or_hold(std::move(parcel));
    }
    if (late_.size() >= most_late) {
        return send_or_hold(std::move(parcel)) == Sent::gone ? Sent::gone : Sent::crowded;
    }
    late_.emplace(now + delivery.wait, std::move(parcel));
    return Sent::done;
}

void Outbox::send_due()
{
    while (!late_.empty() && late_.begin()->first <= std::chrono::steady_clock::now()) {
        send_or_hold(std::move(late_.extract(late_.begin()).mapped()));
    }
}

void Outbox::drop(std::uint16_t sap)
{
    held_.erase(sap);
    std::erase_if(late_, [sap](const auto& each) { return each.second.sap == sap; });
}

} // namespace vorsim
