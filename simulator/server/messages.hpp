// messages.hpp: a message from its arrival to its answer and its record.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "faults/rule_list.hpp"
#include "gateway/gateway.hpp"
#include "record/counters.hpp"
#include "server/konfd_server.hpp"
#include "server/managers.hpp"
#include "server/recorder.hpp"
#include "server/relay.hpp"
#include "server/reply_queue.hpp"

namespace vorsim::server {

// The gateway's state, however it is reached: settings, faults and counters.
struct World {
    World(const gateway::Gateway::Settings& gateway_settings, const konfd::Konfd::Settings& konfd_settings)
        : gateway(gateway_settings), konfd(konfd_settings), faults(gateway_settings.seed),
          settings_of_gateway(gateway_settings), settings_of_konfd(konfd_settings)
    {
    }

    // Faults stay.
    void reset()
    {
        gateway = gateway::Gateway(settings_of_gateway);
        konfd = konfd::Konfd(settings_of_konfd);
        counters = {};
    }

    gateway::Gateway gateway;
    konfd::Konfd konfd;
    faults::RuleList faults;
    record::Counters counters{}; // since the last reset
    gateway::Gateway::Settings settings_of_gateway;
    konfd::Konfd::Settings settings_of_konfd;
};

class Messages {
public:
    Messages(sockets::Loop& loop, World& world, Recorder& recorder, std::uint64_t seed,
             const std::map<std::uint16_t, Delay>& delays, const Relay::Ways& ways, bool show_secrets);

    // Throws when another process serves the SAP.
    void start(std::uint16_t sap) { managers_.start(sap); }
    // Pending answers are lost.
    void stop(std::uint16_t sap);
    void leave(std::uint16_t sap) { managers_.leave(sap); }
    void own(std::uint16_t sap) { managers_.own(sap); }
    // Those of real managers are no longer awaited.
    void end() { relay_.drop(); }
    const Managers& managers() const { return managers_; }
    const Relay& relay() const { return relay_; }

    // Applies faults to konfd's reply and records it.
    faults::ReplyFault deliver(KonfdExchange& exchange);

private:
    // A message is waiting there. It is served in its turn: the earliest of all first.
    void receive(sockets::Endpoint& endpoint);
    bool serve();
    void take(sockets::Endpoint& endpoint);
    void deliver(std::uint16_t sap, const VORINFRA_MESSAGE& message, sockets::Arrival arrived,
                 gateway::Decision decision);
    void settle_passed(Passed& passed, const Outcome& outcome);
    // Answers, stores and records it.
    void settle(const Asker& asker, sockets::Arrival arrived, gateway::Decision& decision,
                const faults::Delivery& delivery);
    // Applies the fault. Stops the manager where it says so.
    faults::Delivery delivery_of(std::uint16_t sap, gateway::Decision& decision,
                                 const std::optional<faults::DueRule>& due);
    void discard(const sockets::Endpoint& endpoint, sockets::Arrival arrived, values::Record record);

    World& world_;
    Recorder& recorder_;
    bool show_secrets_;
    Managers managers_;
    ReplyQueue reply_queue_;
    Relay relay_;
    Delays delays_;
    sockets::Arrival horizon_{}; // all messages that arrived before it are known
};

} // namespace vorsim::server
