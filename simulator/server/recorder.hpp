// recorder.hpp: what is said and written down of all that reaches the gateway.
#pragma once

#include <cstdint>
#include <string>

#include "record/counters.hpp"
#include "server/control.hpp"
#include "server/journal.hpp"
#include "sockets/console.hpp"
#include "sockets/endpoint.hpp"
#include "values/record.hpp"

namespace vorsim {

class Recorder {
public:
    Recorder(Loop& loop, Control& control, const Counters& counters);

    // Throws when the file cannot be a journal.
    void open_journal(const std::string& path) { journal_ = MessageJournal(path); }
    void begin_journal(std::uint64_t seed, bool show_secrets);

    Console& out() { return out_; }
    Console& errors() { return errors_; }
    std::uint64_t lines_lost() const { return out_.lost() + errors_.lost(); }

    // Somebody reads the bytes.
    bool bytes_wanted() const { return journal_.kept() || control_.is_watched(); }
    // Adds its number, when it came and how long it took, for the journal and for those who watch.
    void write_down(Record& record, Arrival arrived);

    bool blamed() const { return blamed_; }
    bool journal_failed() const { return journal_.failed(); }

private:
    Control& control_;
    const Counters& counters_;
    Console out_;
    Console errors_;
    MessageJournal journal_;
    bool blamed_ = false; // ever, whatever was reset
    std::uint64_t recorded_ = 0;
};

} // namespace vorsim
