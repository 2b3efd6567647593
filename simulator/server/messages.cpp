#include "server/messages.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>

#include <fmt/core.h>

#include "faults/faults.hpp"
#include "record/bytes.hpp"
#include "tables/managers.hpp"

namespace vorsim {
namespace {

constexpr int messages_in_turn = 64;

Message message_of(std::uint16_t sap, const VORINFRA_MESSAGE& message)
{
    return {.sap = sap,
            .source = message.source,
            .id = message.id,
            .answer_wanted = message.answer_wanted != 0,
            .meta_data = {message.meta_data, message.meta_data_size},
            .payload = {message.payload, message.payload_size}};
}

// Whether the datagram has the form of a message.
bool is_message(const std::vector<std::uint8_t>& datagram)
{
    VOR_IPC_MSG_HDR header{};
    if (datagram.size() < sizeof header) {
        return false;
    }
    std::memcpy(&header, datagram.data(), sizeof header);
    return datagram.size() == sizeof header + std::size_t{header.meta_data_sz} + header.payload_sz;
}

} // namespace

Messages::Messages(Loop& loop, World& world, Recorder& recorder, std::uint64_t seed,
                   const std::map<std::uint16_t, Delay>& delays, bool show_secrets)
    : world_(world), recorder_(recorder), show_secrets_(show_secrets),
      managers_(loop, [this](Inlet& inlet) { receive(inlet); }), outbox_([this](std::uint16_t sap) {
          const Inlet* const inlet = managers_.inlet(sap);
          return inlet != nullptr ? inlet->handle() : nullptr;
      }),
      delays_(seed, delays)
{
    loop.in_turn([this] { return serve(); });
    loop.at([this] { return outbox_.deadline(); }, [this] { outbox_.on_deadline(std::chrono::steady_clock::now()); });
    loop.at([this] { return managers_.deadline(); },
            [this] {
                managers_.on_deadline(std::chrono::steady_clock::now(),
                                      [this](const std::string& why) { recorder_.errors().line(why); });
            });
}

void Messages::stop(std::uint16_t sap)
{
    managers_.stop(sap);
    outbox_.drop(sap);
}

void Messages::receive(Inlet& inlet)
{
    horizon_ = std::max(horizon_, inlet.next().value_or(Arrival{}));
}

// What arrived after the horizon waits for the next turn: only then is it known
// that nothing came before it at another manager.
bool Messages::serve()
{
    for (int turn = 0; turn < messages_in_turn; ++turn) {
        Inlet* first = nullptr;
        for (const auto& [sap, inlet] : managers_.inlets()) {
            const auto next = inlet->known();
            if (next && *next <= horizon_ && (first == nullptr || *next < *first->known())) {
                first = inlet.get();
            }
        }
        if (first == nullptr) {
            break;
        }
        const std::uint16_t sap = first->handle()->sap_id;
        take(*first);
        if (Inlet* const still = managers_.inlet(sap)) {
            still->next();
        }
    }
    horizon_ = std::chrono::system_clock::now();
    return false; // what is left is readable still
}

void Messages::take(Inlet& inlet)
{
    const Arrival arrived = *inlet.known();
    const std::uint16_t sap = inlet.handle()->sap_id;
    VORINFRA_MESSAGE message;
    const int received = inlet.receive(message);
    if (std::ferror(stderr) != 0) { // the platform's own line found no room
        std::clearerr(stderr);
        recorder_.errors().count_lost(1);
    }
    if (received < 0) {
        const bool answers = is_message(inlet.datagram());
        discard(inlet, arrived, answers ? "foreign" : "malformed",
                answers ? "an answer that nobody awaits"
                        : fmt::format("{} bytes that are no message", inlet.datagram().size()));
    } else if (received > 0 && message.destination != sap) {
        discard(inlet, arrived, "foreign", fmt::format("a message to SAP {}", message.destination));
    } else if (received > 0) {
        deliver(sap, message, arrived,
                world_.gateway.judge(message_of(sap, message),
                                     recorder_.bytes_wanted() ? Detail::recorded : Detail::outcome));
    }
}

faults::Delivery Messages::disturb(std::uint16_t sap, const VORINFRA_MESSAGE& message, Judgement& judgement)
{
    const auto now = std::chrono::steady_clock::now();
    faults::Delivery delivery;
    if (const auto due = world_.faults.due({.sap = sap,
                                            .client = message.source,
                                            .id = message.id,
                                            .call = judgement.call,
                                            .object = judgement.object,
                                            .answered = judgement.answered},
                                           now)) {
        ++world_.counters.faulted;
        delivery = faults::disturb(judgement, *due);
    }
    if (delivery.way == faults::Delivery::Way::dying) {
        managers_.stop_until(sap, now + delivery.wait);
        outbox_.drop(sap);
    } else {
        delivery.wait += delays_.draw(sap);
    }
    return delivery;
}

void Messages::deliver(std::uint16_t sap, const VORINFRA_MESSAGE& message, Arrival arrived, Judgement judgement)
{
    using Way = faults::Delivery::Way;
    const faults::Delivery delivery = disturb(sap, message, judgement);
    world_.gateway.settle(judgement);
    auto& [line, entry] = judgement.report;
    const auto sent = outbox_.send(sap, message, judgement, delivery, std::chrono::steady_clock::now());
    if (sent == Outbox::Sent::gone) {
        line += " (the asker is gone)";
        entry["delivered"] = false;
    } else if (sent == Outbox::Sent::crowded) {
        line += " (too many answers are late: this one is not)";
    }
    const bool accepted = !entry.contains("complaint");
    ++world_.counters.messages;
    ++(accepted ? world_.counters.accepted : world_.counters.complained);
    recorder_.out().line(line);
    if (recorder_.bytes_wanted()) {
        entry["awaits"] = message.answer_wanted != 0;
        entry["meta_data"] = hex({message.meta_data, message.meta_data_size});
        entry["payload"] = payload_record(message_of(sap, message), accepted, show_secrets_);
        if (judgement.answered && delivery.way == Way::refused) {
            entry["refused"] = true;
        } else if (judgement.answered && delivery.way != Way::never && delivery.way != Way::dying) {
            entry["answer_id"] = fmt::format("{:#x}", judgement.answer_id);
            entry["answer_payload"] = hex(judgement.answer);
        }
        entry["line"] = line;
    }
    entry["complained"] = !accepted;
    recorder_.record(std::move(entry), arrived, judgement.call, judgement.object);
}

void Messages::discard(const Inlet& inlet, Arrival arrived, const char* what, const std::string& why)
{
    const std::uint16_t sap = inlet.handle()->sap_id;
    ++(std::string_view(what) == "foreign" ? world_.counters.foreign : world_.counters.malformed);
    recorder_.record({{"sap", sap},
                      {what, why},
                      {"datagram", datagram_record(inlet.datagram(), show_secrets_)},
                      {"line", fmt::format("{}: {}: {}", what, manager_label(sap), why)}},
                     arrived);
}

faults::Hearing Messages::deliver(KonfdExchange& exchange)
{
    auto& [text, reply] = exchange.exchange;
    auto hearing = faults::Hearing::whole;
    if (const auto due = world_.faults.due(
            {.konfd = true, .object = reply.report.record["konfd"].string(), .answered = !reply.answer.empty()},
            std::chrono::steady_clock::now())) {
        ++world_.counters.faulted;
        hearing = faults::disturb(reply, *due);
    }
    ++(reply.complained ? world_.counters.complained : world_.counters.accepted);
    recorder_.out().line(reply.report.line);
    Json entry = {{"client", exchange.client}};
    for (const auto& [name, value] : reply.report.record.members()) {
        entry[name] = value;
    }
    entry["complained"] = reply.complained;
    if (recorder_.bytes_wanted()) {
        entry["text"] = konfd_record(text, show_secrets_);
        const bool unheard = hearing == faults::Hearing::never || hearing == faults::Hearing::hung_up;
        entry["answer_text"] = unheard ? "" : hex(reply.answer);
        if (unheard) {
            entry["delivered"] = false;
        }
        entry["line"] = reply.report.line;
    }
    recorder_.record(std::move(entry), exchange.arrived);
    return hearing;
}

} // namespace vorsim
