// console.hpp: standard output and error, whether or not anybody reads them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "sockets/loop.hpp"

namespace vorsim::sockets {

// Writes lines to a descriptor without ever blocking. Unread lines are kept up to a limit; those beyond it are dropped
// and counted, and a line reports how many.
class Console {
public:
    // Where it can be written no longer, the errors say why.
    Console(Loop& loop, int descriptor, Console* errors = nullptr);

    void line(std::string_view text);
    // Lines that others failed to write to the same descriptor.
    void count_dropped(std::uint64_t lines) { dropped_ += lines; }
    std::uint64_t dropped() const { return dropped_; }

private:
    // How writing is kept from blocking.
    enum class Kind : std::uint8_t { asked_first, socket, file };

    static Kind keep_from_blocking(int descriptor);
    ssize_t write_some(std::string_view bytes) const;
    void flush(); // as much as fits now
    void report_dropped();
    void on_writable();

    Loop& loop_;
    int descriptor_;
    Kind kind_;
    bool waits_ = false;
    bool full_ = false;
    bool gone_ = false; // the reader, or the room
    Console* errors_;
    std::string pending_;
    std::uint64_t dropped_ = 0;
    std::uint64_t reported_ = 0; // of the dropped
};

} // namespace vorsim::sockets
