// journal.hpp: the file of what a gateway accepted: one record per line, each on disk before the call that it announces
// is sent.
#pragma once

#include <string>
#include <unistd.h>
#include <utility>

#include "call/session.hpp"
#include "site/history.hpp"
#include "text/json_lines.hpp"

namespace vorcfg::site {

// All of these throw an InputError where the journal cannot be used.
class Journal {
public:
    // To read only; where there is none, nothing has been accepted. An incomplete line is reported and left there.
    static Journal read(const std::string& path);
    // To write, locked: an incomplete line is reported and removed; O_CREAT creates the file. A name says whose it is.
    static Journal open(const std::string& path, int flags = 0, const std::string& gateway = {});

    void check_gateway(const std::string& gateway) const; // no name: any

    const History& history() const { return history_; }
    const std::string& path() const { return path_; }

    // The call that is about to be sent, on disk when this returns; and its verdict.
    void begin(const call::PreparedCall& call, const Entry* takes_back = nullptr);
    void end(const call::PreparedCall& call, const call::CallResult& result);

    void append(const Record& record, bool on_disk = true);
    void sync() { fdatasync(file_.descriptor()); }
    void close() { file_.close(); } // for others to confirm or revert

private:
    explicit Journal(std::string path) : path_(std::move(path)) {}
    void load(bool repair);

    std::string path_;
    vor::JsonLines file_;
    History history_;
};

} // namespace vorcfg::site
