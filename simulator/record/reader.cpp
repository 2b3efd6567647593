#include "record/reader.hpp"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <fmt/core.h>

#include "text/json.hpp"

namespace vorsim::record {

JournalReader::JournalReader(const std::string& path)
try : path_(path), file_(vor::open_to_read(path)) {
} catch (const vor::FileError& error) {
    throw std::runtime_error(fmt::format("cannot read the journal {}: {}", path, error.what()));
}

std::optional<JournalLine> JournalReader::next()
try {
    constexpr std::string_view versions[] = {"1", "2"};
    static_assert(std::size(versions) == journal_version);
    for (auto text = file_.next(); text && !torn(); text = file_.next()) {
        Line line;
        try {
            line = read_line(*text);
        } catch (const vor::JsonLimit& limit) {
            throw std::runtime_error(fmt::format("{}:{}: {}", path_, file_.number(), limit.what()));
        } catch (const std::exception&) {
            throw std::runtime_error(fmt::format("{}:{}: not a journal record", path_, file_.number()));
        }
        if (!line.version) {
            return JournalLine{std::move(line), file_.number(), version_};
        }
        const auto* const known = std::ranges::find(versions, *line.version);
        if (known == std::end(versions)) {
            throw std::runtime_error(fmt::format("{}:{}: journal version {} is not supported, expected 1 to {}", path_,
                                                 file_.number(), *line.version, journal_version));
        }
        version_ = static_cast<int>(known - versions) + 1;
    }
    return {};
} catch (const vor::FileError& error) {
    throw std::runtime_error(fmt::format("cannot read the journal {}: {}", path_, error.what()));
}

std::string JournalReader::place(const JournalLine& line) const
{
    return fmt::format("{}:{}", path_, line.number);
}

} // namespace vorsim::record
