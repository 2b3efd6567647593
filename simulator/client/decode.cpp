#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "client/commands.hpp"
#include "client/line_options.hpp"
#include "record/filter.hpp"
#include "record/reader.hpp"
#include "text/text.hpp"

namespace vorsim::client {
namespace {

std::string bytes(const values::Record& record)
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

constexpr vor::OptionOf<LineOptions> decode_options[] = {{{"--bytes", "", ""}, vor::taken_as<&LineOptions::bytes>}};

} // namespace

int decode(const std::vector<std::string>& arguments)
{
    record::Filter filter;
    LineOptions how;
    std::string path;
    for (vor::Operands operands(arguments); !operands.empty();) {
        if (!operands.take_option(decode_options, how) && !operands.take_option(line_options, how) &&
            !operands.take_option(record::filter_options, filter)) {
            if (!path.empty()) {
                operands.end();
            }
            path = operands.take("FILE");
        }
    }
    if (path.empty()) {
        throw server::UsageError("needs FILE");
    }
    filter.check();
    const record::LineStyle style = how.style();
    record::JournalReader journal(path);
    while (const auto line = journal.next()) {
        const values::Record& record = line->record;
        if (!line->damage.empty() && !how.json) {
            throw std::runtime_error(fmt::format("{}: {}", journal.place(*line), line->damage));
        }
        if (record.seq == 0 && !how.json) {
            throw std::runtime_error(fmt::format("{}: not a journal record", journal.place(*line)));
        }
        if (!filter.passes(record)) {
            continue;
        }
        if (how.json) {
            print(record::rewritten(*line) + "\n");
            continue;
        }
        const std::string took = record.took ? fmt::format("{} us", *record.took) : "-";
        print(fmt::format("{}\n",
                          record::shown(record, style, fmt::format("{}  {}  {}", record.seq, record.time, took))));
        if (how.bytes) {
            print(bytes(record));
        }
    }
    if (journal.torn()) {
        vor::print_line(stderr, fmt::format("vorsim: {}: skipping the unfinished last line", path));
    }
    return 0;
}

} // namespace vorsim::client
