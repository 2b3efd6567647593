// recorder.hpp: prints, journals and publishes all that reaches the gateway.
#pragma once

#include <cstdint>
#include <string>

#include "record/counters.hpp"
#include "record/line.hpp"
#include "server/control.hpp"
#include "server/journal.hpp"
#include "sockets/console.hpp"
#include "sockets/endpoint.hpp"
#include "values/record.hpp"

namespace vorsim::server {

class Recorder {
public:
    Recorder(sockets::Loop& loop, Control& control, const record::Counters& counters, const record::LineStyle& style);

    // Throws if the file cannot be used as a journal.
    void open_journal(const std::string& path) { journal_ = MessageJournal(path); }
    void begin_journal(std::uint64_t seed, bool show_secrets);

    sockets::Console& out() { return out_; }
    sockets::Console& errors() { return errors_; }
    std::uint64_t lines_dropped() const { return out_.dropped() + errors_.dropped(); }

    // Whether the bytes are needed, for the journal or a watching client.
    bool keeps_bytes() const { return journal_.kept() || control_.is_watched(); }
    // Adds the number, the line and, where they are needed, the times.
    void record(values::Record& record, sockets::Arrival arrived);

    bool failed() const { return failed_; }
    bool journal_failed() const { return journal_.failed(); }

private:
    Control& control_;
    const record::Counters& counters_;
    sockets::Console errors_;
    sockets::Console out_;
    MessageJournal journal_;
    record::LineStyle style_;
    bool failed_ = false; // what --strict reports; stays over a reset
    std::uint64_t recorded_ = 0;
};

} // namespace vorsim::server
