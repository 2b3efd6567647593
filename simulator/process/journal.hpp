// journal.hpp: one JSON object per message, on one line, written at once.
#pragma once

#include <cstdint>
#include <string>

#include "process/unix_socket.hpp"
#include "values/value.hpp"

namespace vorsim {

class Journal {
public:
    Journal() = default;
    // Appends to the file; throws when it cannot be written.
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
