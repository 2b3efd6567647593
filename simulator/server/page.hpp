// page.hpp: vorsim-page, the program that serves the page: what it does to the gateway any client could do.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <sys/types.h>

#include "sockets/loop.hpp"

namespace vorsim {

class Page {
public:
    // Takes the port (0: one that is free); throws when it cannot, or when the program is not there.
    Page(std::uint16_t port, bool control);
    // Ends it at once; it ends likewise when this process does, however that is.
    ~Page();
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    // Starts it: the gateway can be asked from now on. Should it end, it is told what came of it.
    void start(Loop& loop, std::function<void(const std::string& exit_reason)> on_end);
    // "http://127.0.0.1:8080/#TOKEN": what stands behind # is sent to nobody.
    std::string link() const;

private:
    std::string exit_reason();

    bool control_;
    std::uint16_t port_;
    std::string program_;
    std::string token_;
    Descriptor listener_;
    Descriptor socket_; // closed, it ends; and where it ends, that is seen here
    pid_t child_ = -1;
};

} // namespace vorsim
