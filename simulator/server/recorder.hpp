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

namespace vorsim {

class Recorder {
public:
    Recorder(Loop& loop, Control& control, const Counters& counters, const LineStyle& style);

    // Throws if the file cannot be used as a journal.
    void open_journal(const std::string& path) { journal_ = MessageJournal(path); }
    void begin_journal(std::uint64_t seed, bool show_secrets);

    Console& out() { return out_; }
    Console& errors() { return errors_; }
    std::uint64_t lines_dropped() const { return out_.dropped() + errors_.dropped(); }

    // Whether the bytes are needed, for the journal or a watching client.
    bool keeps_bytes() const { return journal_.kept() || control_.is_watched(); }
    // Adds the number, the line and, where they are needed, the times.
    void record(Record& record, Arrival arrived);

    bool failed() const { return failed_; }
    bool journal_failed() const { return journal_.failed(); }

private:
    Control& control_;
    const Counters& counters_;
    Console out_;
    Console errors_;
    MessageJournal journal_;
    LineStyle style_;
    bool failed_ = false; // what --strict reports; stays over a reset
    std::uint64_t recorded_ = 0;
};

} // namespace vorsim
