// process.hpp: the page in a process of its own, that can harm the gateway no more than any client.
#pragma once

#include <cstdint>
#include <string>

#include <sys/types.h>

#include "page/site.hpp"
#include "sockets/unix_socket.hpp"

namespace vorsim::page {

class Process {
public:
    // Takes the port (0: one that is free) and begins; throws when it cannot. Before any thread
    // is, and before anything is opened that is the gateway's own.
    Process(std::uint16_t port, bool control);
    // Ends it at once; it ends likewise when this process does, however that is.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // The gateway can be asked from now on.
    void open();
    // "http://127.0.0.1:8080/#TOKEN": what stands behind # is sent to nobody.
    std::string link() const;
    // Readable when it has ended; then its fate can be told.
    int descriptor() const { return socket_.get(); }
    std::string fate();

private:
    Settings settings_;
    Descriptor socket_;
    pid_t child_ = -1;
};

} // namespace vorsim::page
