#include "record.hpp"

#include <utility>

#include <fmt/core.h>

#include "record/bytes.hpp"
#include "text/parse.hpp"

namespace soak {
namespace {

constexpr std::uint64_t at_once = 1'000'000; // microseconds: much less than an answer is waited for

Record record_of(const vor::Json& json)
{
    Record record;
    record.konfd = json.contains("konfd");
    record.line = json.value("line", "");
    const std::string rule = json.contains("fault") ? json["fault"].value("rule", "") : "";
    const auto is = [&](const char* action) { return rule.find(action) != std::string::npos; };
    record.delayed =
        is(": late") || is(": swapped") || is(": split") || json.value("took", std::uint64_t{0}) >= at_once;
    record.answered = json.value("delivered", true);
    if (record.konfd) {
        record.text = json.value("konfd", "");
        record.answer = vorsim::record::bytes_of_hex(json.value("answer_text", "")).value();
        return record;
    }
    record.awaited = json.value("awaits", false);
    record.answered = record.answered && json.contains("answer_id");
    record.sap = json.value("sap", std::uint16_t{0});
    record.id = vor::number_in<std::uint32_t>(json.at("id").string()).value();
    if (record.answered) {
        record.answer_id = vor::number_in<std::uint32_t>(json.at("answer_id").string()).value();
        record.answer = vorsim::record::bytes_of_hex(json.at("answer_payload").string()).value();
    }
    return record;
}

} // namespace

JournalTail::JournalTail(const std::string& path, std::uint16_t sap, std::string konfd_tag)
    : file_(path), source_(fmt::format("\"source\":{},", sap)), tag_(std::move(konfd_tag))
{
}

std::optional<Record> JournalTail::next()
{
    std::string line;
    while (std::getline(file_, line)) {
        if (file_.eof()) { // the rest of the line is still to come
            unfinished_ += line;
            break;
        }
        line.insert(0, std::exchange(unfinished_, {}));
        const bool own = line.find(source_) != line.npos;
        const bool ours = !own && line.find("\"konfd\":") != line.npos && line.find(tag_) != line.npos;
        if (own || ours) {
            return record_of(vor::Json::parse(line));
        }
    }
    file_.clear();
    return {};
}

} // namespace soak
