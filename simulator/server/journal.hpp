// journal.hpp: one JSON object per message, on one line, written at once.
#pragma once

#include <string>

#include "sockets/unix_socket.hpp"

namespace vorsim {

class Journal {
public:
    Journal() = default;
    // Appends to the file, made its owner's alone; throws when it cannot be
    // written, or is none of its own: a link, a folder, somebody else's.
    explicit Journal(const std::string& path);
    Journal(Journal&&) = default;
    Journal& operator=(Journal&&) = default;
    // A file of its own that holds nothing goes with it.
    ~Journal();

    bool kept() const { return file_.get() >= 0 && !failed(); }
    bool failed() const { return !why_.empty(); }
    const std::string& why() const { return why_; }
    void write(const std::string& line); // without its end

private:
    std::string path_;
    Descriptor file_;
    bool made_ = false;
    std::string why_;
};

} // namespace vorsim
