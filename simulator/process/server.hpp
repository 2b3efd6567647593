// server.hpp: the gateway as a process.
#pragma once

#include <memory>

#include <vorinfra_manager.h>

#include "gateway/gateway.hpp"
#include "process/control.hpp"
#include "process/journal.hpp"
#include "process/konfd_server.hpp"
#include "process/options.hpp"

namespace vorsim {

class Server {
public:
    // Binds everything; throws when it cannot.
    explicit Server(const Options& options);

    // Until a signal ends it. Returns the exit code.
    int run();

private:
    struct Unbind {
        void operator()(VOR_IPC_HANDLE* handle) const { vor_ipc_unbind(handle); }
    };
    using Endpoint = std::unique_ptr<VOR_IPC_HANDLE, Unbind>;

    void bind_manager(std::uint16_t sap);
    void bind_konfd();
    void receive(VOR_IPC_HANDLE* endpoint);
    void deliver(VOR_IPC_HANDLE* endpoint, const VORINFRA_MESSAGE& message, Judgement judgement);
    void report(const Report& what);
    void write_state() const;
    std::string show(std::string_view request) const;
    std::string text() const;
    Json json() const;

    Options options_;
    std::string directory_;
    Loop loop_;
    Gateway gateway_;
    konfd::Konfd konfd_;
    Journal journal_;
    std::unique_ptr<Control> control_;
    std::vector<Endpoint> endpoints_;
    std::unique_ptr<KonfdServer> konfd_server_;
    Descriptor signals_;
};

} // namespace vorsim
