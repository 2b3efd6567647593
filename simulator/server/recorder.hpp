// recorder.hpp: prints, journals and publishes all that reaches the gateway.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "record/line.hpp"
#include "server/control.hpp"
#include "server/journal.hpp"
#include "server/memory.hpp"
#include "sockets/console.hpp"
#include "sockets/endpoint.hpp"
#include "values/record.hpp"

namespace vorsim::server {

class Recorder {
public:
    Recorder(sockets::Loop& loop, Control& control, Memory& memory, const record::LineStyle& style);

    // Throws if the file cannot be used as a journal.
    void open_journal(const std::string& path) { journal_ = MessageJournal(path); }
    void begin_journal(std::uint64_t seed, bool show_secrets);

    sockets::Console& out() { return out_; }
    sockets::Console& errors() { return errors_; }
    std::uint64_t lines_dropped() const { return out_.dropped() + errors_.dropped(); }

    // Whether the bytes are needed, for the journal or a watching client.
    bool keeps_bytes() const { return journal_.kept() || control_.is_watched(); }
    // Adds the number, the line and, where they are needed, the times; takes the record.
    void record(values::Record& record, sockets::Arrival arrived);

    // Why --strict fails; empty: it does not. Stays over a reset.
    std::string complaints() const;
    bool journal_failed() const { return journal_.failed(); }

private:
    Control& control_;
    Memory& memory_;
    sockets::Console errors_;
    sockets::Console out_;
    MessageJournal journal_;
    record::LineStyle style_;
    struct Complaint {
        std::uint64_t seq;
        std::string line;
    };
    std::vector<Complaint> complaints_;            // the first of them
    std::array<std::uint64_t, 5> complained_of_{}; // by kind of record; last, the invalid ones
    std::uint64_t recorded_ = 0;

    void note_complaint(const values::Record& record);
};

} // namespace vorsim::server
