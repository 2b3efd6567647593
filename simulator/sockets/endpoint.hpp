// endpoint.hpp: a manager's endpoint and its next message.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vorinfra_manager.h>

namespace vorsim::sockets {

using Arrival = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

class Endpoint {
public:
    // The handle is null if the SAP cannot be bound; the platform prints why.
    explicit Endpoint(std::uint16_t sap);
    // The first free SAP of some in another gateway's directory.
    Endpoint(const std::string& directory, std::uint16_t first, std::uint16_t last);

    VOR_IPC_HANDLE* handle() const { return endpoint_.get(); }
    int descriptor() const { return vorinfra_descriptor(endpoint_.get()); }

    // When the next message arrived; nothing when none is waiting.
    std::optional<Arrival> next();
    // The same, without looking again.
    std::optional<Arrival> known() const { return next_; }
    // Receives it, as vorinfra_receive does.
    int receive(VORINFRA_MESSAGE& message);
    // The same, as vorinfra_receive_answer does.
    int receive_answer(VORINFRA_MESSAGE& message);
    // The bytes of the last one received.
    const std::vector<std::uint8_t>& datagram() const { return datagram_; }
    // Whether they have the form of a message.
    bool is_message() const;

private:
    void ask_for_arrivals();

    struct Unbind {
        void operator()(VOR_IPC_HANDLE* handle) const { vor_ipc_unbind(handle); }
    };

    std::unique_ptr<VOR_IPC_HANDLE, Unbind> endpoint_;
    std::optional<Arrival> next_;
    std::vector<std::uint8_t> datagram_;
};

} // namespace vorsim::sockets
