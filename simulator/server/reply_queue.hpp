// reply_queue.hpp: answers on their way: at once, later, or behind another's.
#pragma once

#include <map>
#include <vector>

#include <vorinfra_manager.h>

#include "faults/faults.hpp"
#include "server/managers.hpp"

namespace vorsim {

class ReplyQueue {
public:
    using Time = faults::Time;

    ReplyQueue(Loop& loop, const Managers& endpoints);

    enum class Sent : std::uint8_t { done, gone, crowded };
    // gone: the asker is; crowded: so many wait that this one did not.
    Sent send(std::uint16_t sap, const VORINFRA_MESSAGE& request, const Decision& decision,
              const faults::Delivery& delivery, Time now);

    // What a manager that is gone had not sent yet.
    void drop(std::uint16_t sap);

private:
    struct PendingReply {
        std::uint16_t sap;
        std::uint16_t client;
        std::uint16_t sequence;
        std::uint32_t request_id;
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
    std::map<std::uint16_t, PendingReply> held_; // one a manager, behind its next
};

} // namespace vorsim
