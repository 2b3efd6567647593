// journal.hpp: the file that keeps what a gateway accepted: a record a line,
// each on disk before what it announces is done.
#pragma once

#include <string>
#include <unistd.h>
#include <utility>

#include "call/session.hpp"
#include "site/history.hpp"
#include "text/json_lines.hpp"

namespace vorcfg {

// All of these throw a InputError where the journal cannot be used.
class Journal {
public:
    // To look at; where there is none, nothing has been accepted. What is torn is said and stays.
    static Journal read(const std::string& path);
    // To write, by nobody else at the same time: repaired, which is said, and with O_CREAT made where there is none.
    // With a name, it is of this gateway.
    static Journal open(const std::string& path, int flags = 0, const std::string& gateway = {});

    void check_gateway(const std::string& wanted) const; // no name: any

    const History& history() const { return history_; }
    const std::string& path() const { return path_; }

    // What is about to be sent, on disk when this returns; and what became of it.
    void begin(const PreparedCall& planned, const Entry* takes_back = nullptr);
    void end(const PreparedCall& planned, const CallResult& report);

    void append(const Record& record, bool on_disk = true);
    void sync() { fdatasync(file_.descriptor()); }
    void close() { file_.close(); } // for others to decide about

private:
    explicit Journal(std::string path) : path_(std::move(path)) {}
    void load(bool repair);

    std::string path_;
    vor::JsonLines file_;
    History history_;
};

} // namespace vorcfg
