// ask.hpp: the running gateway, from another process.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "record/json.hpp"
#include "sockets/unix_socket.hpp"

namespace vorsim::client {

// The platform's directory; throws UsageError when it cannot be used.
std::string directory();

// A connection that carries one request.
class Asked {
public:
    // Throws when no gateway runs in the directory.
    explicit Asked(const vor::Json& request);

    // More of the answer in time; empty at its end. Throws when nothing comes.
    std::string receive(std::chrono::milliseconds within);
    int descriptor() const { return socket_.get(); }

private:
    Descriptor socket_;
};

// The messages of the running gateway from now on.
class Watch {
public:
    Watch();

    // Readable when there is more.
    int descriptor() const { return asked_.descriptor(); }
    // Waits for more; false at the gateway's end. Throws what the gateway has against it.
    bool read(const std::function<void(const Line& line)>& on_line);

private:
    Asked asked_;
    std::string text_;
    bool begun_ = false;
};

// The whole answer; throws what the gateway has against it.
std::string ask(const vor::Json& request);

} // namespace vorsim::client
