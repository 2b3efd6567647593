// reader.hpp: a journal's records, one at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "record/json.hpp"
#include "text/json_lines.hpp"

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
    bool torn() const { return file_.torn(); }
    std::string place(const JournalLine& line) const;

private:
    std::string path_;
    vor::JsonLines file_;
    int version_ = 1;
};

} // namespace vorsim
