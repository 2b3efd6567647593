#include "record/reader.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

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

std::optional<Record> JournalReader::next()
{
    std::string text;
    while (left_ > 0 && std::getline(file_, text)) {
        ++line_;
        left_ -= std::min<std::uintmax_t>(left_, text.size() + 1);
        if (file_.eof()) {
            torn_ = true;
            return {};
        }
        std::optional<Json> data = Json::read(text);
        if (!data || !data->is_object()) {
            throw std::runtime_error(fmt::format("{}:{}: no record of a journal", path_, line_));
        }
        const Json* const begins = data->find("journal");
        if (begins == nullptr) {
            return Record{line_, version_, std::move(*data)};
        }
        version_ = begins->is_integer() ? begins->number<int>() : 0;
        if (version_ < 1 || version_ > journal_version) {
            throw std::runtime_error(
                fmt::format("{}:{}: a journal of version {}, which this vorsim does not know: it reads 1 to {}", path_,
                            line_, vor::dump(*begins), journal_version));
        }
    }
    return {};
}

std::string JournalReader::place(const Record& record) const
{
    return fmt::format("{}:{}", path_, record.line);
}

} // namespace vorsim
