// control.hpp: how the running gateway is asked, watched and told.
//
// A request is one line of JSON, {"do": WHAT, ...}; the answer is "+" and what
// was asked for, or "-" and why not, to the connection's end. {"do": "watch"}
// gets a line of JSON for every message until it leaves, {"do": "wait", "call":
// NAME, "object": TEXT} "?" where none was yet, then "+" at the first such message.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "sockets/listener.hpp"
#include "text/json.hpp"

namespace vorsim {

// The control socket of the gateway in this directory.
std::string control_path(const std::string& directory);

class Control {
public:
    // What it throws is the answer, too.
    using Handler = std::function<std::string(const vor::Json& request)>;

    Control(Loop& loop, const std::string& path, Handler answer_to);

    // A message for those who wait for it, its record's line for those who watch.
    void note(const std::string& call, const std::string& object);
    void publish(const std::string& line);
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
        std::string call{}; // of the one
        std::string object{};
        std::uint64_t lost{};
    };
    using Clients = std::map<int, Client>;

    void welcome(Descriptor socket);
    void read_request(int descriptor);
    bool answer_all();
    std::string answer_to(Client& client, const std::string& request);
    void subscribe(Client& client, const vor::Json& request);
    void write_some(int descriptor);
    void drop_client(int descriptor);

    Loop& loop_;
    Handler answer_to_;
    Clients clients_;
    std::vector<int> fresh_; // clients that asked in this turn: what was sent to managers before is served first
    std::vector<int> asked_; // in the one before
    std::set<std::pair<std::string, std::string>> seen_; // calls and objects
    Door door_;
};

} // namespace vorsim
