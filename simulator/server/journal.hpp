// journal.hpp: one JSON object per message, on one line, written at once.
#pragma once

#include <string>

#include "text/json_lines.hpp"

namespace vorsim::server {

class MessageJournal {
public:
    MessageJournal() = default;
    // Appends to the file, which only its owner may read; throws when it cannot be written, or is a link, a folder or
    // somebody else's.
    explicit MessageJournal(const std::string& path);
    MessageJournal(MessageJournal&&) = default;
    MessageJournal& operator=(MessageJournal&&) = default;
    // Removes the file if it created it and nothing was written.
    ~MessageJournal();

    bool kept() const { return file_.is_open() && !failed(); }
    bool failed() const { return !why_.empty(); }
    const std::string& why() const { return why_; }
    void write(const std::string& line); // without its end

private:
    std::string path_;
    vor::JsonLines file_;
    bool made_ = false;
    std::string why_;
};

} // namespace vorsim::server
