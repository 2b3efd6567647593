// ask.hpp: the running gateway, from another process.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "sockets/unix_socket.hpp"

namespace vorsim::client {

// A connection that carries one request: a line, and the document behind it where there is one.
class Connection {
public:
    // Throws when no gateway runs in the directory; a UsageError first, where the line is not understood.
    explicit Connection(const std::string& line, const std::optional<std::string>& document = {});

    // More of the answer, empty at its end; nothing when nothing comes in time.
    std::optional<std::string> receive(std::chrono::milliseconds within);
    int descriptor() const { return socket_.get(); }

private:
    Descriptor socket_;
};

// The messages of the running gateway from now on.
class EventStream {
public:
    enum class What : char { message = '+', note = '!' }; // a note is for people
    using OnLine = std::function<void(What what, std::string_view line)>;

    explicit EventStream(const std::string& line) : connection_(line) {}

    // Readable when there is more.
    int descriptor() const { return connection_.descriptor(); }
    // Waits for more; false at the gateway's end. Throws what the gateway has against it.
    bool read(const OnLine& on_line);

private:
    Connection connection_;
    std::string text_;
    bool begun_ = false;
};

// The whole answer; throws what the gateway has against it, a UsageError where it does not understand the line.
std::string ask(const std::string& line, const std::optional<std::string>& document = {});

} // namespace vorsim::client
