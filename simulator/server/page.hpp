// page.hpp: starts vorsim-page, the program that serves the page. To the gateway it is a client like any other.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <sys/types.h>

#include "sockets/loop.hpp"

namespace vorsim::server {

class Page {
public:
    // Binds the port (0: any free one); throws if it cannot, or if there is no such program.
    Page(std::uint16_t port, bool control);
    // Kills it; it also ends when this process does, however that happens.
    ~Page();
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    // Starts it; on_end is called if it ends by itself.
    void start(sockets::Loop& loop, std::function<void(const std::string& exit_reason)> on_end);
    // "http://127.0.0.1:8080/#TOKEN": browsers do not send the part after #.
    std::string link() const;

private:
    std::string exit_reason();

    bool control_;
    std::uint16_t port_;
    std::string program_;
    std::string token_;
    sockets::Descriptor listener_;
    sockets::Descriptor socket_; // closing it ends the program, and its end closes it
    pid_t child_ = -1;
};

} // namespace vorsim::server
