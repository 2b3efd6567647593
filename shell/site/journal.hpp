// journal.hpp: the file of what was requested of a gateway and what became of it: one record per line, each on disk
// before the call that it announces is sent.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "call/session.hpp"
#include "site/ledger.hpp"
#include "site/machine.hpp"

namespace vorcfg::site {

struct JournalInUse : input::InputError {};

// The journal at this path or, sorted, those in this folder. Throws an InputError.
std::vector<std::string> journals_in(const std::string& path);

// All of these throw an InputError where the journal cannot be used.
class Journal {
public:
    // To read only; where there is none, nothing has been accepted. An incomplete line is reported and left there.
    static Journal read(const Machine& machine, const std::string& path);
    // To write, locked: an incomplete line is reported and removed. A name says whose it is.
    static Journal open(const Machine& machine, const std::string& path, Access access = Access::write,
                        const std::string& gateway = {});

    // Whoever uses a gateway's journal must name the gateway.
    void check_gateway(const std::string& gateway) const;

    const Ledger& ledger() const { return ledger_; }
    const std::string& path() const { return path_; }
    const Machine& machine() const { return machine_; }
    Moment now() const { return machine_.clock.now(); }

    // The call that is about to be sent, on disk when this returns; and its verdict, which is there with the next call.
    void begin(const call::PreparedCall& call);
    void begin_revert(const call::PreparedCall& call, const Entry& reverted);
    void end(const call::PreparedCall& call, const call::CallResult& result);

    void append(const Record& record, bool on_disk = true);
    // The same, kept for later where the disk has no room; what it says must happen all the same.
    void append_or_keep(const Record& record);
    bool write_kept(); // false: there is still no room
    void sync();
    void close() { file_.reset(); } // for others to confirm or revert

private:
    Journal(const Machine& machine, std::string path) : machine_(machine), path_(std::move(path)) {}
    void load(bool repair);
    CallBegun begun(const call::PreparedCall& call) const;
    void mark_reverting();
    void note_place(const Record& record, std::string_view line);

    Machine machine_;
    std::string path_;
    std::unique_ptr<JournalFile> file_;
    std::size_t size_ = 0;
    std::size_t not_reverting_at_ = 0; // in the last ApplyPending; 0: there is none
    std::string kept_;
    Ledger ledger_;
};

} // namespace vorcfg::site
