// control.hpp: how `vorsim show` asks the running gateway.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "process/loop.hpp"
#include "process/unix_socket.hpp"

namespace vorsim {

// The control socket of the gateway in this directory.
std::string control_path(const std::string& directory);

// One request line a connection, answered to the connection's end.
class Control {
public:
    using Handler = std::function<std::string(std::string_view request)>;

    Control(Loop& loop, const std::string& path, Handler answer_to);

private:
    struct Client {
        Descriptor socket;
        std::string request;
        std::string answer;
    };

    void accept_client();
    void read_request(int descriptor);
    void write_answer(int descriptor);
    void drop_client(int descriptor);

    Loop& loop_;
    Listener listener_;
    Handler answer_to_;
    std::map<int, Client> clients_;
};

// Asks the gateway that runs in the directory; throws when none answers.
std::string ask_running(const std::string& directory, const std::string& request);

} // namespace vorsim
