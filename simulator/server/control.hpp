// control.hpp: how the running gateway is asked, watched and told.
//
// A request is a command's line, the document that it carries behind the line's end, and a zero byte. The answer begins
// with a byte that says what it is, and goes on to the connection's end:
//   +  what was asked for
//   -  why it was not done
//   ?  why the command is not understood
//   ~  a line: how many milliseconds it may take until one of the above follows, a blank, and why there is none then
// Who watches gets lines after the first: + and a message, or ! and what is to be known beside them.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "server/command.hpp"
#include "sockets/unix_socket.hpp"
#include "values/record.hpp"

namespace vorsim {

// The platform's directory. Throws a UsageError when it cannot be used.
std::string directory();
// The control socket of the gateway in this directory.
std::string control_path(const std::string& directory);

class Control {
public:
    using Parse = Command (*)(std::string_view request); // throws a UsageError

    Control(Loop& loop, Running& running, Parse parse) : loop_(loop), running_(running), parse_(parse) {}

    // Throws InUse where another gateway does.
    void listen(const std::string& path);

    // A message for those who wait for it, its record for those who watch.
    void note(const std::string& call, const std::string& object);
    void publish(const Record& record, const std::string& json);
    bool is_watched() const;
    // What came before is waited for no more.
    void forget_past() { seen_.clear(); }

private:
    enum class Wish : std::uint8_t { answer, all, one };
    struct Client {
        Descriptor socket;
        Loop::Time active;
        std::string input{};
        std::string output{};
        Wish wish{};
        Wait one{};
        WatchRequest all{};
        std::uint64_t lost{};
    };
    using Clients = std::map<int, Client>;

    void welcome(Descriptor socket);
    void read_request(int descriptor);
    bool answer_all();
    std::string answer_to(Client& client, const std::string& request);
    std::string watch(Client& client, const WatchRequest& wanted);
    std::string wait(Client& client, const Wait& wanted);
    void make_room_for_one_more() const;
    void write_some(int descriptor);
    void drop_client(int descriptor);

    Loop& loop_;
    Running& running_;
    const Parse parse_;
    Clients clients_;
    std::vector<int> fresh_;      // clients that asked in this turn: what was sent to managers before is served first
    std::vector<int> connection_; // in the one before
    std::set<std::pair<std::string, std::string>> seen_; // calls and objects
    std::optional<Listener> listener_;
};

} // namespace vorsim
