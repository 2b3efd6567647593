#include "server/messages.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

#include <fmt/core.h>

#include "faults/faults.hpp"
#include "record/bytes.hpp"

namespace vorsim::server {
namespace {

constexpr int messages_in_turn = 64;

gateway::Message message_of(std::uint16_t sap, const VORINFRA_MESSAGE& message)
{
    return {.sap = sap,
            .source = message.source,
            .id = message.id,
            .answer_wanted = message.answer_wanted != 0,
            .meta_data = {message.meta_data, message.meta_data_size},
            .payload = {message.payload, message.payload_size}};
}

} // namespace

Messages::Messages(sockets::Loop& loop, World& world, Recorder& recorder, std::uint64_t seed,
                   const std::map<std::uint16_t, Delay>& delays, const Relay::Ways& ways, bool show_secrets)
    : world_(world), recorder_(recorder), show_secrets_(show_secrets),
      managers_(
          loop, [this](sockets::Endpoint& endpoint) { receive(endpoint); },
          [this](const std::string& why) { recorder_.errors().line(why); }),
      reply_queue_(loop, managers_),
      relay_(
          loop, managers_, ways, [this](Passed& passed, const Outcome& outcome) { settle_passed(passed, outcome); },
          [this](const sockets::Endpoint& endpoint, sockets::Arrival arrived, values::Record record) {
              discard(endpoint, arrived, std::move(record));
          }),
      delays_(seed, delays)
{
    loop.in_turn([this] { return serve(); });
}

void Messages::stop(std::uint16_t sap)
{
    managers_.stop(sap);
    reply_queue_.drop(sap);
    relay_.drop(sap);
}

void Messages::receive(sockets::Endpoint& endpoint)
{
    horizon_ = std::max(horizon_, endpoint.next().value_or(sockets::Arrival{}));
}

// A message that arrived after the horizon waits for the next turn: only then is it certain that none arrived before
// it at another manager.
bool Messages::serve()
{
    for (int turn = 0; turn < messages_in_turn; ++turn) {
        sockets::Endpoint* first = nullptr;
        for (const auto& [sap, endpoint] : managers_.endpoints()) {
            const auto next = endpoint->known();
            if (next && *next <= horizon_ && (first == nullptr || *next < *first->known()) && !relay_.is_held_up(sap)) {
                first = endpoint.get();
            }
        }
        if (first == nullptr) {
            break;
        }
        const std::uint16_t sap = first->handle()->sap_id;
        take(*first);
        if (sockets::Endpoint* const still = managers_.endpoint(sap)) {
            still->next();
        }
    }
    horizon_ = std::chrono::system_clock::now();
    return false; // the rest is still readable
}

void Messages::take(sockets::Endpoint& endpoint)
{
    const sockets::Arrival arrived = *endpoint.known();
    const std::uint16_t sap = endpoint.handle()->sap_id;
    VORINFRA_MESSAGE message;
    const int received = endpoint.receive(message);
    if (std::ferror(stderr) != 0) { // the platform's own line was not written
        std::clearerr(stderr);
        recorder_.errors().count_dropped(1);
    }
    if (received < 0) {
        discard(endpoint, arrived, dropped(endpoint, "unexpected answer"));
    } else if (received > 0 && message.destination != sap) {
        values::Record record{.kind = values::Record::Kind::foreign};
        record.sap = sap;
        record.why = fmt::format("addressed to SAP {}", message.destination);
        discard(endpoint, arrived, std::move(record));
    } else if (received > 0) {
        deliver(sap, message, arrived, world_.gateway.judge(message_of(sap, message)));
    }
}

void Messages::deliver(std::uint16_t sap, const VORINFRA_MESSAGE& message, sockets::Arrival arrived,
                       gateway::Decision decision)
{
    values::Record& record = decision.record;
    if (recorder_.keeps_bytes()) {
        record.meta_data = record::hex({message.meta_data, message.meta_data_size});
        record.payload = record::payload_record(message_of(sap, message), !record.complained, show_secrets_);
    }
    auto due = world_.faults.due({.sap = sap,
                                  .client = message.source,
                                  .id = message.id,
                                  .call = record.call,
                                  .object = record.object,
                                  .answered = decision.answered},
                                 std::chrono::steady_clock::now());
    const Asker asker{sap, message.source, message.sequence, message.id};
    if (relay_.leads_to(sap) && !(due && due->rule.action.acts_instead())) {
        relay_.pass_on(message, {asker, arrived, std::move(decision), std::move(due)});
        return;
    }
    settle(asker, arrived, decision, delivery_of(sap, decision, due));
}

faults::Delivery Messages::delivery_of(std::uint16_t sap, gateway::Decision& decision,
                                       const std::optional<faults::DueRule>& due)
{
    faults::Delivery delivery;
    if (due) {
        ++world_.counters.faulted;
        delivery = faults::apply(decision, *due);
    }
    if (delivery.way == faults::Delivery::Way::dying) {
        const auto back = std::chrono::steady_clock::now() + delivery.wait;
        stop(sap);
        managers_.start_at(sap, back);
    } else {
        delivery.wait += delays_.draw(sap);
    }
    return delivery;
}

void Messages::settle_passed(Passed& passed, const Outcome& outcome)
{
    using Kind = Outcome::Kind;
    gateway::Decision& decision = passed.decision;
    faults::Delivery delivery;
    if (outcome.kind == Kind::answered) {
        gateway::Gateway::take_answer(decision, outcome.id, outcome.bytes);
        delivery = delivery_of(passed.asker.sap, decision, passed.due);
    } else if (outcome.kind != Kind::sent) {
        decision.withdraw();
        decision.record.complained = decision.record.complained || outcome.kind != Kind::stopped;
        decision.record.notes.push_back(outcome.note);
        delivery.way = outcome.kind == Kind::refused ? faults::Delivery::Way::refused : faults::Delivery::Way::never;
    }
    settle(passed.asker, passed.arrived, decision, delivery);
}

void Messages::settle(const Asker& asker, sockets::Arrival arrived, gateway::Decision& decision,
                      const faults::Delivery& delivery)
{
    using Way = faults::Delivery::Way;
    values::Record& record = decision.record;
    if (!world_.gateway.store(decision)) {
        record.notes.emplace_back("no room to store it");
    }
    const auto sent = reply_queue_.send(asker, decision, delivery, std::chrono::steady_clock::now());
    const bool answers = decision.answered && delivery.way != Way::never && delivery.way != Way::dying;
    record.refused = decision.answered && delivery.way == Way::refused;
    record.accepted =
        decision.row_to_keep != nullptr || (!record.answer_values.empty() && !record.refused && !record.complained);
    record.delivered = sent != ReplyQueue::Sent::gone;
    record.unanswered = decision.answered && (!answers || record.refused || !record.delivered);
    if (!record.delivered) {
        record.notes.emplace_back("client gone");
    } else if (sent == ReplyQueue::Sent::crowded) {
        record.notes.emplace_back("too many late answers: not delayed");
    }
    record::Counters& counters = world_.counters;
    ++counters.messages;
    ++(!record.complained ? counters.accepted : record.via.empty() ? counters.complained : counters.invalid);
    if (recorder_.keeps_bytes() && answers && !record.refused) {
        record.answer_id = decision.answer_id;
        record.answer_payload = record::hex(decision.answer);
    }
    recorder_.record(record, arrived);
}

void Messages::discard(const sockets::Endpoint& endpoint, sockets::Arrival arrived, values::Record record)
{
    const bool foreign = record.kind == values::Record::Kind::foreign;
    ++(foreign ? world_.counters.foreign : world_.counters.malformed);
    if (recorder_.keeps_bytes()) {
        record.datagram = record::datagram_record(endpoint.datagram(), show_secrets_);
    }
    recorder_.record(record, arrived);
}

faults::ReplyFault Messages::deliver(KonfdExchange& exchange)
{
    konfd::Reply& reply = exchange.exchange.reply;
    values::Record& record = reply.record;
    auto fault = faults::ReplyFault::whole;
    if (const auto due =
            world_.faults.due({.konfd = true, .object = record.commands, .answered = !reply.answer.empty()},
                              std::chrono::steady_clock::now())) {
        ++world_.counters.faulted;
        fault = faults::apply(reply, *due);
    }
    ++(record.complained ? world_.counters.complained : world_.counters.accepted);
    record.client = exchange.client;
    record.delivered = fault != faults::ReplyFault::never && fault != faults::ReplyFault::hung_up;
    record.unanswered = !record.delivered;
    record.accepted = record.answer == "-o";
    if (recorder_.keeps_bytes()) {
        record.text = record::konfd_record(exchange.exchange.text, show_secrets_);
        record.answer_text = record.delivered ? record::hex(reply.answer) : "";
    }
    recorder_.record(record, exchange.arrived);
    return fault;
}

} // namespace vorsim::server
