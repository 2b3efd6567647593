// reader.hpp: a journal's records, one at a time.
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>

#include "record/json.hpp"

namespace vorsim {

struct JournalLine : Line {
    std::uint64_t number{};
    int of_version{}; // the journal that it stands in
};

class JournalReader {
public:
    // Throws when there is no such file.
    explicit JournalReader(const std::string& path);

    // Throws, with file and line, for what is no record, and for a journal of
    // a version that is not known. A last line that was never finished is none.
    std::optional<JournalLine> next();
    bool torn() const { return torn_; }
    std::string place(const JournalLine& line) const;

private:
    std::string path_;
    std::ifstream file_;
    std::uint64_t line_ = 0;
    int version_ = 1;
    std::uintmax_t left_ = UINTMAX_MAX; // of what it held when it was opened: it may be written on
    bool torn_ = false;
};

} // namespace vorsim
