// relay.hpp: passes messages on to the real managers of other directories, and brings back their answers.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vorinfra_manager.h>

#include "faults/rule_list.hpp"
#include "gateway/gateway.hpp"
#include "server/managers.hpp"
#include "server/reply_queue.hpp"
#include "sockets/endpoint.hpp"
#include "sockets/loop.hpp"

namespace vorsim::server {

// A message that was passed on, until it is settled.
struct Passed {
    Asker asker{};
    sockets::Arrival arrived{};
    gateway::Decision decision{};
    std::optional<faults::DueRule> due{}; // changes the answer when it comes
};

// What became of it.
struct Outcome {
    enum class Kind : std::uint8_t {
        answered,
        sent,    // one-way
        refused, // the manager did not receive it
        lost,    // the manager received it and did not answer
        stopped, // nobody waits for the answer any more
    };
    Kind kind{};
    std::uint32_t id{}; // of the answer, with its bytes
    gateway::Bytes bytes{};
    std::string note{};
};

class Relay {
public:
    using Time = sockets::Loop::Time;
    using Ways = std::map<std::uint16_t, std::string>; // the directory of each manager's program
    using OnSettled = std::function<void(Passed& passed, const Outcome& outcome)>;
    // Something else came: an answer that nobody awaits, or no answer at all.
    using OnStray =
        std::function<void(const sockets::Endpoint& endpoint, sockets::Arrival arrived, values::Record record)>;

    // Throws when a directory cannot be used.
    Relay(sockets::Loop& loop, Managers& managers, const Ways& ways, OnSettled on_settled, OnStray on_stray);

    bool leads_to(std::uint16_t sap) const { return !ways_.empty() && ways_.contains(sap); }
    // Null: vorsim answers for the manager itself.
    const std::string* directory(std::uint16_t sap) const
    {
        return leads_to(sap) ? &ways_.at(sap)->directory : nullptr;
    }
    void pass_on(const VORINFRA_MESSAGE& message, Passed passed);
    // While a message waits for the manager, no more are taken from its clients.
    bool is_held_up(std::uint16_t sap) const { return !waiting_.empty() && waiting_.contains(sap); }

    // vorsim no longer serves this manager, or any.
    void drop(std::optional<std::uint16_t> sap = {});

    // "gpiomgr passed on to DIRECTORY from SAP 65000"
    std::vector<std::string> notes() const;

private:
    struct Awaited {
        Passed passed;
        Time until;
        Time check; // whether the manager is still there
    };
    struct GivenUp { // its answer may still come
        std::uint16_t sap;
        bool lost; // else, its answer is not expected
        Time until;
    };
    struct Place {
        explicit Place(const std::string& path);
        std::uint16_t next_sequence();

        std::string directory;
        sockets::Endpoint endpoint;
        std::uint16_t sequence;
        std::chrono::milliseconds patience{};
        std::map<std::uint16_t, Awaited> awaited{}; // by sequence
        std::map<std::uint16_t, GivenUp> given_up{};
    };
    // The manager has no room for it, or too many answers are due.
    struct Waiting {
        VORINFRA_MESSAGE message;
        Passed passed;
        Time until;
    };

    bool send(Place& place, const VORINFRA_MESSAGE& message, Passed& passed);
    void send_waiting();
    void refuse(Passed& passed, const char* why);
    void receive(Place& place);
    void report_stray(Place& place, sockets::Arrival arrived, const VORINFRA_MESSAGE& answer);
    void give_up(Place& place, std::uint16_t sequence, const Outcome& outcome);
    void check(Place& place);
    std::optional<Time> next() const;
    void act();

    Managers& managers_;
    OnSettled on_settled_;
    OnStray on_stray_;
    std::size_t most_awaited_;
    std::vector<std::shared_ptr<Place>> places_;
    std::map<std::uint16_t, std::shared_ptr<Place>> ways_; // of each manager
    std::map<std::uint16_t, std::unique_ptr<Waiting>> waiting_;
    Time retry_{}; // when to send them
};

} // namespace vorsim::server
