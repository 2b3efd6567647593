// ask.hpp: the running gateway, from another process.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "process/unix_socket.hpp"
#include "values/value.hpp"

namespace vorsim::client {

// The platform's directory; throws UsageError when it cannot be used.
std::string directory();

// A connection that carries one request.
class Asked {
public:
    // Throws when no gateway runs in the directory.
    explicit Asked(const Json& request);

    // More of the answer in time; empty at its end. Throws when nothing comes.
    std::string receive(std::chrono::milliseconds within);

private:
    Descriptor socket_;
};

// The whole answer; throws what the gateway has against it.
std::string ask(const Json& request);

} // namespace vorsim::client
