// server.hpp: the gateway as a process: its files, its signals, its exit.
#pragma once

#include <memory>
#include <string>

#include "server/control.hpp"
#include "server/konfd_server.hpp"
#include "server/memory.hpp"
#include "server/messages.hpp"
#include "server/options.hpp"
#include "server/page.hpp"
#include "server/recorder.hpp"
#include "sockets/loop.hpp"

namespace vorsim::server {

class Server {
public:
    // Binds everything and opens its files; if it throws, nothing is left behind.
    explicit Server(const Options& options);

    // Until a signal ends it. Returns the exit code.
    int run();

private:
    void bind_managers();
    void bind_konfd();
    void write_state();

    Options options_;
    std::unique_ptr<Page> page_; // its port is bound before anything else is created
    std::string directory_;
    sockets::Loop loop_;
    sockets::Descriptor stop_requests_;
    World world_;
    Memory memory_;
    Control control_;
    Recorder recorder_;
    Messages messages_;
    Running running_;
    std::unique_ptr<KonfdServer> konfd_server_;
    sockets::Descriptor spare_; // kept for the state file
};

} // namespace vorsim::server
