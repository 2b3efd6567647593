#include "record/reader.hpp"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <fmt/core.h>

namespace vorsim {

JournalReader::JournalReader(const std::string& path) : path_(path), file_(std::fopen(path.c_str(), "re"))
{
    if (!file_.is_open() || std::filesystem::is_directory(path)) {
        throw std::runtime_error(
            fmt::format("cannot read the journal {}: {}", path, std::strerror(file_.is_open() ? EISDIR : errno)));
    }
}

std::optional<Record> JournalReader::next()
{
    for (auto text = file_.next(); text && !torn(); text = file_.next()) {
        std::optional<Json> data = Json::read(*text);
        if (!data || !data->is_object()) {
            throw std::runtime_error(fmt::format("{}:{}: no record of a journal", path_, file_.number()));
        }
        const Json* const begins = data->find("journal");
        if (begins == nullptr) {
            return Record{file_.number(), version_, std::move(*data)};
        }
        version_ = begins->is_integer() ? begins->number<int>() : 0;
        if (version_ < 1 || version_ > journal_version) {
            throw std::runtime_error(
                fmt::format("{}:{}: a journal of version {}, which this vorsim does not know: it reads 1 to {}", path_,
                            file_.number(), vor::dump(*begins), journal_version));
        }
    }
    return {};
}

std::string JournalReader::place(const Record& record) const
{
    return fmt::format("{}:{}", path_, record.line);
}

} // namespace vorsim
