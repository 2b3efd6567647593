#include "record/reader.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <fmt/core.h>

namespace vorsim {

JournalReader::JournalReader(const std::string& path) : path_(path), file_(path)
{
    if (!file_ || std::filesystem::is_directory(path)) {
        throw std::runtime_error(
            fmt::format("cannot read the journal {}: {}", path, std::strerror(file_ ? EISDIR : errno)));
    }
    std::error_code no_file; // a pipe has no size, and an end of its own
    const auto size = std::filesystem::file_size(path, no_file);
    left_ = no_file ? left_ : size;
}

std::optional<JournalLine> JournalReader::next()
{
    constexpr std::string_view versions[] = {"1", "2"};
    static_assert(std::size(versions) == journal_version);
    std::string text;
    while (left_ > 0 && std::getline(file_, text)) {
        ++line_;
        left_ -= std::min<std::uintmax_t>(left_, text.size() + 1);
        if (file_.eof()) {
            torn_ = true;
            return {};
        }
        Line line;
        try {
            line = read_line(text);
        } catch (const std::exception&) {
            throw std::runtime_error(fmt::format("{}:{}: no record of a journal", path_, line_));
        }
        if (!line.version) {
            return JournalLine{std::move(line), line_, version_};
        }
        const auto* const known = std::ranges::find(versions, *line.version);
        if (known == std::end(versions)) {
            throw std::runtime_error(
                fmt::format("{}:{}: a journal of version {}, which this vorsim does not know: it reads 1 to {}", path_,
                            line_, *line.version, journal_version));
        }
        version_ = static_cast<int>(known - versions) + 1;
    }
    return {};
}

std::string JournalReader::place(const JournalLine& line) const
{
    return fmt::format("{}:{}", path_, line.number);
}

} // namespace vorsim
