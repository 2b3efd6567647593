// http.hpp: HTTP on a loop by libmicrohttpd, with limits on what clients can use.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <string>

#include "sockets/loop.hpp"

struct MHD_Connection;
struct MHD_Daemon;

namespace vorsim::page {

struct Request {
    std::string method;
    std::string path;
    std::string host;
    std::string origin; // empty: none was sent
    std::string token;
    std::string last_event; // the last one that the client has received; empty: none
    std::string body{};
};

// Returns more of a stream each time; empty: nothing for now.
using Source = std::function<std::string()>;

struct Response {
    unsigned status = 200;
    std::string type = "text/plain; charset=utf-8";
    std::string body{};
    Source stream{}; // instead of the body
};

class Http {
public:
    using Handler = std::function<Response(const Request& request)>;

    Http(sockets::Loop& loop, int listener, Handler answer_to);
    ~Http();
    Http(const Http&) = delete;
    Http& operator=(const Http&) = delete;

    // The sources have more; `beat` sends something on every stream, so that a dead connection is noticed.
    void wake(bool beat = false);
    std::size_t streams() const;

private:
    struct Client;
    struct Callbacks;

    void make_room();

    sockets::Loop& loop_;
    Handler answer_to_;
    std::list<Client> clients_; // the oldest first
    MHD_Daemon* daemon_ = nullptr;
};

} // namespace vorsim::page
