// reply_queue.hpp: sends answers at once, later, or after another one.
#pragma once

#include <map>
#include <vector>

#include <vorinfra_manager.h>

#include "faults/faults.hpp"
#include "server/managers.hpp"

namespace vorsim::server {

// Where an answer goes, and what it answers.
struct Asker {
    std::uint16_t sap; // of the manager asked
    std::uint16_t client;
    std::uint16_t sequence;
    std::uint32_t request_id;
};

class ReplyQueue {
public:
    using Time = faults::Time;

    ReplyQueue(sockets::Loop& loop, const Managers& endpoints);

    enum class Sent : std::uint8_t { done, gone, crowded };
    // gone: the client is; crowded: too many answers were waiting, so this one was not delayed.
    Sent send(const Asker& asker, const gateway::Decision& decision, const faults::Delivery& delivery, Time now);

    // Pending answers of a manager that stopped.
    void drop(std::uint16_t sap);

private:
    struct PendingReply {
        Asker asker;
        std::uint32_t answer_id;
        std::vector<std::uint8_t> bytes;
        faults::Delivery::Way way;
    };

    bool send_now(const PendingReply& reply);
    bool post(const PendingReply& reply);
    Sent send_or_hold(PendingReply reply);
    void send_due();

    const Managers& managers_;
    std::multimap<Time, PendingReply> late_;
    std::map<std::uint16_t, PendingReply> held_; // one per manager, sent after its next
};

} // namespace vorsim::server
