/* journal.hpp: one JSON object per message, on one line, written at once. */
#pragma once

#include <cstdint>
#include <string>

#include "told.hpp"
#include "unix_socket.hpp"

namespace vorsim {

/* Text of what may hold bytes that are no UTF-8. */
std::string dump(const Json& json, int indent = -1);

class Journal {
public:
    Journal() = default;
    /* Appends to the file; throws when it cannot be written. */
    explicit Journal(const std::string& path);

    void write(const Json& record);
    bool failed() const { return failed_; }

private:
    std::string path_;
    Descriptor file_;
    std::uint64_t written_ = 0;
    bool failed_ = false;
};

} // namespace vorsim
