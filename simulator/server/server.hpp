// server.hpp: the gateway as a process.
#pragma once

#include <functional>
#include <memory>

#include "faults/plan.hpp"
#include "gateway/gateway.hpp"
#include "record/counters.hpp"
#include "server/control.hpp"
#include "server/journal.hpp"
#include "server/konfd_server.hpp"
#include "server/managers.hpp"
#include "server/options.hpp"
#include "server/reply_queue.hpp"
#include "sockets/console.hpp"

namespace vorsim {

// A process that serves beside the gateway.
struct Companion {
    std::string announcement;          // a line behind the ready line
    int descriptor;                    // readable when it has ended
    std::function<std::string()> fate; // the line to say then
};

class Server {
public:
    // Binds everything and opens its files; throws when it cannot, and leaves nothing.
    explicit Server(const Options& options);

    void accompany(const Companion& companion);
    // Until a signal ends it. Returns the exit code.
    int run();

private:
    void bind_managers();
    void bind_konfd();
    // A message waits there. It is served in its turn: the earliest of all first.
    void receive(Inlet& inlet);
    bool serve();
    void take(Inlet& inlet);
    void deliver(std::uint16_t sap, const VORINFRA_MESSAGE& message, Arrival arrived, Judgement judgement);
    // What a fault makes of it; the manager may be gone then.
    faults::Delivery disturb(std::uint16_t sap, const VORINFRA_MESSAGE& message, Judgement& judgement);
    void discard(const Inlet& inlet, Arrival arrived, Record::Kind kind, const std::string& why);
    faults::Hearing deliver(KonfdExchange& exchange);
    // Adds its number, when it came and how long it took, for the journal and for those who watch.
    void write_down(Record& record, Arrival arrived);
    bool bytes_wanted() const { return journal_.kept() || control_->is_watched(); }
    void write_state() const;
    std::string answer(const vor::Json& request);
    std::string obey(std::string_view command);
    std::string show(const vor::Json& request) const;
    void reset();
    void load(const vor::Json& document);
    std::string text() const;
    vor::Json json() const;
    // The state, and beside it who is served and the faults in force.
    vor::Json overview() const;

    Options options_;
    std::string directory_;
    std::string announcement_; // the companion's
    Loop loop_;
    Descriptor stop_requests_;
    Console out_;
    Console errors_;
    Gateway gateway_;
    konfd::Konfd konfd_;
    faults::Plan faults_;
    Managers managers_;
    Outbox outbox_;
    Delays delays_;
    Counters counters_;   // since the last reset
    bool blamed_ = false; // ever
    std::uint64_t recorded_ = 0;
    std::unique_ptr<Control> control_;
    std::unique_ptr<KonfdServer> konfd_server_;
    Arrival horizon_{}; // what came until then is known, whatever its manager
    Journal journal_;
    Descriptor spare_; // for the state's file, when none is left
};

} // namespace vorsim
