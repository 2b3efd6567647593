// machine.hpp: what a site's commands need of the machine: its clock, the disk with the journals, and the key of
// this user. A test has its own.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "site/secret_key.hpp"

namespace vorcfg::site {

// A time that setting the clock does not change. A gateway may have no clock that runs while it is off, so times of
// different boots cannot be compared.
struct Moment {
    std::string boot;
    std::chrono::milliseconds since_boot{};
    std::string stamp{}; // "2026-05-12T10:04:00Z"
};

class Clock {
public:
    virtual ~Clock() = default;

    virtual Moment now() const = 0;
    virtual std::string stamp(std::chrono::seconds from_now = {}) const = 0;
};

// An open journal. All of these throw a vor::FileError.
class JournalFile {
public:
    virtual ~JournalFile() = default;

    virtual std::string content() = 0;
    virtual void truncate(std::size_t size) = 0;
    // All of the lines, each with its end, or nothing; with `on_disk` they and all before them are there when this
    // returns.
    virtual void append(std::string_view lines, bool on_disk) = 0;
    // On disk when this returns; needs no room there.
    virtual void overwrite(std::size_t offset, std::string_view text) = 0;
    virtual void sync() = 0;
    virtual void sync_name() = 0; // of a new file
};

enum class Access : std::uint8_t { read, write, create };

class Disk {
public:
    virtual ~Disk() = default;

    // To write, it is locked until it is closed. Throws a vor::FileError, with EWOULDBLOCK where another has it.
    virtual std::unique_ptr<JournalFile> open(const std::string& path, Access access) = 0;
};

struct Machine {
    Clock& clock;
    Disk& disk;
    std::function<void(const std::string&)> note; // says what a user should know about a journal
    std::shared_ptr<SecretKey> secret_key{};      // null: secrets are not compared

    call::CallKey key_of(const call::PreparedCall& call, SecretKey::Missing missing) const
    {
        return secret_key != nullptr ? secret_key->key_of(call, missing) : call::key_of(call);
    }
};

Machine this_machine(bool json = false);

// The process that waits to revert an apply holds a lock on the journal, which goes with it, however it ends.
bool hold_waiting(int journal); // once no other does
bool has_waiter(const std::string& journal);

std::string minute_of(std::string_view stamp); // "2026-05-12 10:04 UTC"
std::string second_of(std::string_view stamp); // "2026-05-12 10:04:00 UTC"

} // namespace vorcfg::site
