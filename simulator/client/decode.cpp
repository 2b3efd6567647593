#include <cstdio>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "client/commands.hpp"
#include "record/filter.hpp"
#include "record/reader.hpp"
#include "server/options.hpp"
#include "text/options.hpp"
#include "text/text.hpp"

namespace vorsim::client {
namespace {

std::string bytes(const Record& record)
{
    std::string text;
    const auto add = [&text](const char* name, const std::optional<std::string>& bytes) {
        text += bytes ? fmt::format("    {} {}\n", name, *bytes) : "";
    };
    add("meta_data", record.meta_data);
    add("payload", record.payload);
    if (record.answer_id) {
        text += fmt::format("    answer_id {:#x}\n", *record.answer_id);
    }
    add("answer_payload", record.answer_payload);
    add("text", record.text);
    add("answer_text", record.answer_text);
    add("datagram", record.datagram);
    return text;
}

} // namespace

int decode(std::vector<std::string> arguments)
{
    static constexpr vor::Option own[] = {{"--json", "", ""}, {"--bytes", "", ""}};
    Filter filter;
    bool json = false;
    bool with_bytes = false;
    std::string path;
    const std::vector<std::string_view> words(arguments.begin(), arguments.end());
    for (std::span<const std::string_view> left = words; !left.empty();) {
        if (const auto option = vor::option_in<vor::Option>(own, left)) {
            bool& wanted = option->row->name == "--json" ? json : with_bytes;
            wanted = true;
            left = left.subspan(option->used);
        } else if (const auto wanted = vor::option_in(filter_options(), left)) {
            filter.set(*wanted->row, wanted->value);
            left = left.subspan(wanted->used);
        } else if (left.front().starts_with("-")) {
            throw UsageError(fmt::format("unknown option \"{}\"", left.front()));
        } else if (!path.empty()) {
            throw UsageError(fmt::format("\"{}\" is too much here", left.front()));
        } else {
            path = left.front();
            left = left.subspan(1);
        }
    }
    if (path.empty()) {
        throw UsageError("FILE is missing");
    }
    JournalReader journal(path);
    while (const auto line = journal.next()) {
        const Record& record = line->record;
        if (!line->damage.empty() && !json) {
            throw std::runtime_error(fmt::format("{}: {}", journal.place(*line), line->damage));
        }
        if (!filter.passes(record)) {
            continue;
        }
        if (json) {
            print(line->text + "\n");
            continue;
        }
        const std::string took = record.took ? fmt::format(" {} us", *record.took) : "";
        print(fmt::format("{} {}{}  {}\n", record.seq, record.time, took, record.line));
        if (with_bytes) {
            print(bytes(record));
        }
    }
    if (journal.torn()) {
        vor::print_line(stderr, fmt::format("vorsim: {}: the last line was never finished; it is left out", path));
    }
    return 0;
}

} // namespace vorsim::client
