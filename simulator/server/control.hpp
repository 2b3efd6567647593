// control.hpp: the control socket of the running gateway.
//
// A request is a command's line, after the line's end the document that it carries, and a zero byte. The answer begins
// with a byte that gives its kind, and ends with a zero byte, too; without one, it is not whole:
//   +  the result
//   -  an error
//   ?  a usage error
// A watching client gets more lines: + and a message (its number, a space and JSON without bytes; with --json the whole
// JSON), or ! and a remark.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "server/command.hpp"
#include "sockets/unix_socket.hpp"
#include "values/record.hpp"

namespace vorsim::server {

inline constexpr std::size_t longest_request = 1 << 23;

// The platform's directory. Throws a UsageError when it cannot be used.
std::string directory();
// The control socket of the gateway in this directory.
std::string control_path(const std::string& directory);

class Control {
public:
    using Parse = Command (*)(std::string_view request); // throws a UsageError

    Control(sockets::Loop& loop, Running& running, Parse parse) : loop_(loop), running_(running), parse_(parse) {}

    // Throws InUse when another gateway does.
    void listen(const std::string& path);

    // Answers the clients that wait for such a message.
    void note(const values::Record& record);
    void publish(const values::Record& record, const std::string& json);
    bool is_watched() const;

private:
    enum class Mode : std::uint8_t { answer, watch, wait, quit };
    struct Client {
        sockets::Descriptor socket;
        sockets::Loop::Time since; // when it connected, or was answered
        std::string input{};
        std::string output{};
        Request request{}; // under way
        Mode mode{};
        ReceivedRequest wait{};
        sockets::Loop::Time until{}; // it waits
        WatchRequest watch{};
        std::uint64_t dropped{};

        // Those that watch or wait are not slow: nothing is expected of them.
        std::optional<sockets::Loop::Time> slow_since() const
        {
            return mode == Mode::answer ? std::optional(since) : std::nullopt;
        }
    };
    using Clients = std::map<int, Client>;

    void welcome(sockets::Descriptor socket);
    void read_request(int descriptor);
    bool answer_all();
    std::optional<std::string> answer_to(Client& client);
    void finish(int descriptor, std::string answer);
    void drop_slow();
    std::string watch(Client& client, const WatchRequest& request);
    std::optional<std::string> receive(Client& client, const ReceivedRequest& request);
    void answer(int descriptor); // a client that waits
    void end_waits();
    void limit_watching() const;
    void write_some(int descriptor);
    void drop_client(int descriptor);

    sockets::Loop& loop_;
    Running& running_;
    const Parse parse_;
    Clients clients_;
    std::vector<int> fresh_;     // clients whose request came in this turn: messages sent before it are served first
    std::vector<int> requested_; // in the previous turn, or not done then
    std::optional<sockets::Listener> listener_;
};

} // namespace vorsim::server
