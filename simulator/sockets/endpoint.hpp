// endpoint.hpp: a manager's endpoint, and what is known of the message at its head.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <vorinfra_manager.h>

namespace vorsim {

using Arrival = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

class Endpoint {
public:
    // Null inside when the SAP cannot be bound; why is on standard error.
    explicit Endpoint(std::uint16_t sap);

    VOR_IPC_HANDLE* handle() const { return endpoint_.get(); }
    int descriptor() const { return vorinfra_descriptor(endpoint_.get()); }

    // When the message that is next came in; nothing when none waits.
    std::optional<Arrival> next();
    // The same, as far as it was looked for.
    std::optional<Arrival> known() const { return next_; }
    // Takes it, as vorinfra_receive does.
    int receive(VORINFRA_MESSAGE& message);
    // The last one taken, as it travelled.
    const std::vector<std::uint8_t>& datagram() const { return datagram_; }

private:
    struct Unbind {
        void operator()(VOR_IPC_HANDLE* handle) const { vor_ipc_unbind(handle); }
    };

    std::unique_ptr<VOR_IPC_HANDLE, Unbind> endpoint_;
    std::optional<Arrival> next_;
    std::vector<std::uint8_t> datagram_;
};

} // namespace vorsim
