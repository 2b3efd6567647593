// reader.hpp: a journal's records, one at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "record/json.hpp"
#include "text/json_lines.hpp"

namespace vorsim::record {

struct JournalLine : Line {
    std::uint64_t number{};
    int of_version{}; // of its journal
};

class JournalReader {
public:
    // Throws if the file cannot be read.
    explicit JournalReader(const std::string& path);

    // Throws, with file and line, for anything but a record and for an unknown version. An unfinished last line is
    // skipped.
    std::optional<JournalLine> next();
    bool torn() const { return file_.torn(); }
    std::string place(const JournalLine& line) const;

private:
    std::string path_;
    vor::JsonLines file_;
    int version_ = 1;
};

} // namespace vorsim::record
