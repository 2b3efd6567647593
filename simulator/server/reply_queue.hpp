// outbox.hpp: answers on their way: at once, later, or behind another's.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <vector>

#include <vorinfra_manager.h>

#include "faults/faults.hpp"

namespace vorsim {

class Outbox {
public:
    using Time = faults::Time;
    using Endpoint = std::function<VOR_IPC_HANDLE*(std::uint16_t sap)>; // null: not served now

    explicit Outbox(Endpoint endpoint_of) : endpoint_of_(std::move(endpoint_of)) {}

    enum class Sent : std::uint8_t { done, gone, crowded };
    // gone: the asker is; crowded: so many wait that this one did not.
    Sent send(std::uint16_t sap, const VORINFRA_MESSAGE& request, const Judgement& judgement,
              const faults::Delivery& delivery, Time now);

    std::optional<Time> deadline() const;
    void on_deadline(Time now);
    // What a manager that is gone had not sent yet.
    void drop(std::uint16_t sap);

private:
    struct Parcel {
        std::uint16_t sap;
        std::uint16_t client;
        std::uint16_t sequence;
        std::uint32_t request_id;
        std::uint32_t answer_id;
        std::vector<std::uint8_t> bytes;
        faults::Delivery::Way way;
    };

    bool send_now(const Parcel& parcel);
    bool post(const Parcel& parcel);
    Sent send_or_hold(Parcel parcel);

    Endpoint endpoint_of_;
    std::multimap<Time, Parcel> late_;
    std::map<std::uint16_t, Parcel> held_; // one a manager, behind its next
};

} // namespace vorsim
