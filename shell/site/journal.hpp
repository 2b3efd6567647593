// journal.hpp: the file that keeps what a gateway accepted: one JSON object a
// line, each on disk before what it announces is done.
#pragma once

#include <string>
#include <string_view>

#include "call/session.hpp"
#include "site/history.hpp"

namespace vorcfg {

// All of these throw a Complaint where the journal cannot be used.
class Journal {
public:
    // To look at; where there is none, nothing has been accepted. What is torn is said and stays.
    static Journal read(const std::string& path);
    // To write, by nobody else at the same time: made where there is none, and repaired, which is said. With a name, it
    // is of this gateway.
    static Journal open(const std::string& path, const std::string& gateway);
    // The same of one that must be there.
    static Journal reopen(const std::string& path);

    Journal(Journal&& other) noexcept;
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;
    ~Journal();

    void check_gateway(const std::string& wanted) const; // no name: any

    const History& history() const { return history_; }
    const std::string& path() const { return path_; }

    // What is about to be sent, on disk when this returns; and what became of it.
    void begin(const Said& said, const Place& place, const Entry* replaces, const Entry* takes_back = nullptr);
    void end(const Verdict& verdict, std::optional<bool> done);

    void pend();                                            // what begins from now on waits to be confirmed
    void pend_until(const std::string& until, int process); // it has been made, and this process waits
    void confirm();
    void taken_back();
    void sync();
    void close(); // for others to decide about

private:
    explicit Journal(std::string path) : path_(std::move(path)) {}
    bool open_file(int flags);
    void load(bool repair);
    void take(std::string_view line, std::size_t number);
    void append(const vor::Json& record, bool synced);

    std::string path_;
    int descriptor_ = -1;
    std::size_t size_ = 0;
    History history_;
};

} // namespace vorcfg
