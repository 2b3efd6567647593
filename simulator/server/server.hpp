// server.hpp: the gateway as a process: its files, its signals, its end.
#pragma once

#include <memory>
#include <string>

#include "server/control.hpp"
#include "server/konfd_server.hpp"
#include "server/messages.hpp"
#include "server/options.hpp"
#include "server/page.hpp"
#include "server/recorder.hpp"
#include "sockets/loop.hpp"

namespace vorsim {

class Server {
public:
    // Binds everything and opens its files; throws when it cannot, and leaves nothing.
    explicit Server(const Options& options);

    // Until a signal ends it. Returns the exit code.
    int run();

private:
    void bind_managers();
    void bind_konfd();
    void write_state();

    Options options_;
    std::unique_ptr<Page> page_; // its port is taken before anything is made
    std::string directory_;
    Loop loop_;
    Descriptor stop_requests_;
    World world_;
    Control control_;
    Recorder recorder_;
    Messages messages_;
    Running running_;
    std::unique_ptr<KonfdServer> konfd_server_;
    Descriptor spare_; // for the state's file, when none is left
};

} // namespace vorsim
