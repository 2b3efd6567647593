// ask.hpp: requests to a running gateway.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "sockets/unix_socket.hpp"

namespace vorsim::client {

// How long a gateway may take to go on with a request.
inline constexpr std::chrono::milliseconds patience{10000};

// No gateway runs in the directory: exit code 4.
struct NotRunning : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A connection that carries one request: a line, and possibly a document.
class Connection {
public:
    // Throws NotRunning; a UsageError first, if the line is invalid.
    explicit Connection(const std::string& line, std::chrono::milliseconds within,
                        const std::optional<std::string>& document = {});

    // More of the answer, empty at its end; nothing on timeout.
    std::optional<std::string> receive(std::chrono::milliseconds within);
    int descriptor() const { return socket_.get(); }

private:
    sockets::Descriptor socket_;
};

// The messages of the running gateway from now on.
class EventStream {
public:
    enum class Kind : char { message = '+', note = '!' }; // a note is for people
    using OnLine = std::function<void(Kind kind, std::string_view line)>;

    explicit EventStream(const std::string& line, std::chrono::milliseconds within = patience)
        : connection_(line, within), within_(within)
    {
    }

    // Readable when there is more.
    int descriptor() const { return connection_.descriptor(); }
    // Waits for more; false when the gateway has ended. Throws the gateway's error.
    bool read(const OnLine& on_line);

private:
    Connection connection_;
    std::chrono::milliseconds within_; // the first line comes
    std::string text_;
    bool begun_ = false;
};

// The whole answer; throws the gateway's error, a UsageError for an invalid line.
std::string ask(const std::string& line, const std::optional<std::string>& document = {},
                std::chrono::milliseconds within = patience);

} // namespace vorsim::client
