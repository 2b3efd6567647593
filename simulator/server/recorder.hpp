// recorder.hpp: prints, journals and publishes all that reaches the gateway.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "record/line.hpp"
#include "server/control.hpp"
#include "server/journal.hpp"
#include "sockets/console.hpp"
#include "sockets/endpoint.hpp"
#include "values/record.hpp"

namespace vorsim::server {

class Recorder {
public:
    Recorder(sockets::Loop& loop, Control& control, const record::LineStyle& style);

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

    // The latest since the start or the last reset, numbered without gaps; without their bytes.
    struct Remembered {
        values::Record record;
        sockets::Arrival arrived;
        std::size_t size; // of its texts

        std::string json() const;
    };
    const std::deque<Remembered>& remembered() const { return remembered_; }
    std::uint64_t first() const { return first_; } // since then, remembered or not
    std::uint64_t last() const { return recorded_; }
    void forget();

    // Why --strict fails; empty: it does not. Stays over a reset.
    std::string complaints() const;
    bool journal_failed() const { return journal_.failed(); }

private:
    Control& control_;
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
    std::uint64_t first_ = 1;
    std::deque<Remembered> remembered_;
    std::size_t remembered_size_ = 0;

    void note_complaint(const values::Record& record);
    void remember(values::Record& record, sockets::Arrival arrived);
};

} // namespace vorsim::server
