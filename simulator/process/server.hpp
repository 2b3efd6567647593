// server.hpp: the gateway as a process.
#pragma once

#include <memory>

#include <vorinfra_manager.h>

#include "faults/plan.hpp"
#include "gateway/gateway.hpp"
#include "process/control.hpp"
#include "process/journal.hpp"
#include "process/konfd_server.hpp"
#include "process/managers.hpp"
#include "process/options.hpp"
#include "process/outbox.hpp"

namespace vorsim {

class Server {
public:
    // Binds everything; throws when it cannot.
    explicit Server(const Options& options);

    // Until a signal ends it. Returns the exit code.
    int run();

private:
    void bind_konfd();
    void receive(VOR_IPC_HANDLE* endpoint);
    void deliver(std::uint16_t sap, const VORINFRA_MESSAGE& message, Judgement judgement);
    faults::Hearing reply(konfd::Reply& reply);
    std::string obey(std::string_view request);
    void report(const Report& what);
    void write_state() const;
    std::string show(std::string_view request);
    std::string text() const;
    Json json() const;

    Options options_;
    std::string directory_;
    Loop loop_;
    Gateway gateway_;
    faults::Plan faults_;
    Managers managers_;
    Outbox outbox_;
    Delays delays_;
    konfd::Konfd konfd_;
    Journal journal_;
    std::unique_ptr<Control> control_;
    std::unique_ptr<KonfdServer> konfd_server_;
    Descriptor signals_;
};

} // namespace vorsim
