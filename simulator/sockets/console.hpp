// console.hpp: standard output and error, which need not be read by anybody.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "sockets/loop.hpp"

namespace vorsim {

// Lines to a descriptor, never waited for. What is not read in time is kept up
// to a limit; lines beyond it are lost, counted, and said to be.
class Console {
public:
    Console(Loop& loop, int descriptor);

    void line(std::string_view text);
    // Lines that others failed to write to the same descriptor.
    void count_lost(std::uint64_t lines) { lost_ += lines; }
    std::uint64_t lost() const { return lost_; }

private:
    // What must be done so that writing does not wait.
    enum class Kind : std::uint8_t { asked_first, socket, file };

    static Kind keep_from_blocking(int descriptor);
    ssize_t write_some(std::string_view bytes) const;
    void flush(); // what fits now
    void say_lost();
    void on_writable();

    Loop& loop_;
    int descriptor_;
    Kind kind_;
    bool waits_ = false;
    bool full_ = false;
    bool gone_ = false; // its reader is
    std::string pending_;
    std::uint64_t lost_ = 0;
    std::uint64_t told_ = 0; // of the lost
};

} // namespace vorsim
