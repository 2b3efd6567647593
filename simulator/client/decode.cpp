#include <cstdio>

#include <fmt/core.h>

#include "client/commands.hpp"
#include "record/filter.hpp"
#include "record/reader.hpp"
#include "server/options.hpp"
#include "text/text.hpp"

namespace vorsim::client {
namespace {

// A record of the first version has no line of its own.
std::string line_of_old(const Json& data)
{
    const std::string what =
        data.contains("konfd") ? fmt::format("konfd {}", data.value("konfd", ""))
        : data.contains("call")
            ? fmt::format("{} {} {}", data.value("id", ""), data.value("call", ""), data.value("object", ""))
            : fmt::format("strict: {}: {}", data.value("id", ""), data.value("complaint", ""));
    const auto verdict = data.contains("status")   ? fmt::format("status {}", vor::dump(data["status"]))
                         : data.contains("answer") ? vor::dump(data["answer"])
                                                   : "";
    return fmt::format("{} -> {}", what, verdict);
}

std::string bytes(const Json& data)
{
    std::string text;
    for (const char* name :
         {"meta_data", "payload", "answer_id", "answer_payload", "text", "answer_text", "datagram"}) {
        if (data.contains(name)) {
            text += fmt::format("    {} {}\n", name, data[name].string());
        }
    }
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
            (option->row->name == "--json" ? json : with_bytes) = true;
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
    while (const auto record = journal.next()) {
        const Json& data = record->data;
        if (!filter.passes(data)) {
            continue;
        }
        if (json) {
            print(vor::dump(data) + "\n");
            continue;
        }
        const std::string took = data.contains("took") ? fmt::format(" {} us", vor::dump(data["took"])) : "";
        print(fmt::format("{} {}{}  {}\n", data.value("seq", 0), data.value("time", ""), took,
                          data.contains("line") ? data.value("line", "") : line_of_old(data)));
        if (with_bytes) {
            print(bytes(data));
        }
    }
    if (journal.torn()) {
        vor::print_line(stderr, fmt::format("vorsim: {}: the last line was never finished; it is left out", path));
    }
    return 0;
}

} // namespace vorsim::client
