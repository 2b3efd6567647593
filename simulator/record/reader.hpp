// reader.hpp: a journal's records, one at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "text/json_lines.hpp"
#include "values/value.hpp"

namespace vorsim {

inline constexpr int journal_version = 2; // 1 had no first record, and no bytes

struct Record {
    std::uint64_t line{};
    int version{}; // of the journal that it stands in
    Json data;
};

class JournalReader {
public:
    // Throws when there is no such file.
    explicit JournalReader(const std::string& path);

    // Throws, with file and line, for what is no record, and for a journal of
    // a version that is not known. A last line that was never finished is none.
    std::optional<Record> next();
    bool torn() const { return file_.torn(); }
    std::string place(const Record& record) const;

private:
    std::string path_;
    vor::JsonLines file_;
    int version_ = 1;
};

} // namespace vorsim
