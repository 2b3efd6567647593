#include "rows/konfd_query.hpp"

#include <algorithm>
#include <memory>

#include <device_mgmt/common.h>
#include <device_mgmt/konfd.h>
#include <fmt/core.h>
#include <vorinfra.h>

#include "input/input_error.hpp"
#include "rows/reading.hpp"

namespace vorcfg::rows::konfd_query {

namespace {

enum Part : std::size_t { operation, line_key, line_value, pattern_key, pattern_value, priority, path };

constexpr std::int64_t unset = 3;

struct Option {
    std::string_view name;
    Part first;
    std::size_t least;
    std::size_t most;
};

constexpr Option options[] = {
    {"--line", line_key, 2, 2},
    {"--pattern", pattern_key, 1, 2},
    {"--path", path, 2, 2},
    {"--priority", priority, 1, 1},
};

// --- Its words ------------------------------------------------------------------

Argument argument_of(Part first, std::size_t taken)
{
    return arguments[first == path ? first : first + taken];
}

// Reads the words of one option and returns where the next one begins. The value after the key "password" is a secret.
std::size_t read_option(Reading& reading, const Option& option, std::size_t at)
{
    std::size_t taken = 0;
    bool secret_follows = false;
    while (taken < option.most && at + 1 + taken < reading.words.size()) {
        const std::size_t index = at + 1 + taken;
        if (!reading.words[index].quoted && reading.words[index].text.starts_with("--")) {
            break;
        }
        Argument argument = argument_of(option.first, taken);
        argument.is_secret = secret_follows;
        Value value = reading.value(argument, index);
        secret_follows = taken == 0 && value.text == "password";
        if (option.first == path) {
            reading.values.push_back(std::move(value));
        } else {
            reading.values[option.first + taken] = std::move(value);
        }
        taken++;
    }
    if (taken < option.least) {
        const std::string_view needed = argument_of(option.first, taken).name;
        reading.fail(fmt::format("{} needs a {}", option.name, taken == 0 ? "key" : "value"), at, needed);
    }
    return at + 1 + taken;
}

} // namespace

void read(Reading& reading)
{
    reading.hides_words =
        std::ranges::any_of(reading.words, [](const input::Word& word) { return word.text == "password"; });
    reading.values.resize(path, {.given = false});
    Value& chosen = reading.values[operation];
    for (std::size_t at = Reading::first_word; at < reading.words.size();) {
        const std::string_view word = reading.words[at].text;
        const auto choice = std::ranges::find_if(
            operations, [&](const Choice& each) { return word.starts_with("--") && word.substr(2) == each.name; });
        const auto option = std::ranges::find(options, word, &Option::name);
        if (choice != std::end(operations)) {
            if (chosen.given) {
                reading.fail("expected only one of --set, --check and --unset", at, "operation");
            }
            chosen.number = choice->number;
            chosen.given = true;
            at++;
        } else if (option != std::end(options)) {
            if (option->first != path && reading.values[option->first].given) {
                reading.fail(fmt::format("{} is given twice", option->name), at);
            }
            at = read_option(reading, *option, at);
        } else {
            reading.fail(fmt::format("unexpected argument {}", reading.shown_quoted(at)), at);
        }
    }
    const std::size_t end = reading.words.size();
    const auto given = [&](Part part) { return reading.values[part].given; };
    if (!given(operation)) {
        reading.fail("needs --set, --check or --unset", end, "operation");
    }
    const bool unsets = reading.values[operation].number == unset;
    if (given(line_key) == unsets) {
        reading.fail(unsets ? "--unset takes no --line" : "needs --line", end, "line_key");
    }
    if (!given(pattern_key)) {
        reading.fail("needs --pattern", end, "pattern_key");
    }
}

// --- The calls ------------------------------------------------------------------

namespace {

// The library's clean-up does not free the records of the path.
struct Cleanup {
    void operator()(VOR_CFG_PROTO* query) const
    {
        std::vector<VOR_CFG_PROTO_PATH*> records;
        for (auto* record = query->path_head.stqh_first; record != nullptr; record = record->elm_link.stqe_next) {
            records.push_back(record);
        }
        vor_cfg_proto_cleanup(query);
        for (VOR_CFG_PROTO_PATH* const record : records) {
            vor_free(record);
        }
    }
};

using Query = std::unique_ptr<VOR_CFG_PROTO, Cleanup>;

Query built(std::span<Value> values)
{
    Query query(vor_cfg_proto_init());
    if (query == nullptr) {
        throw input::InputError{"not enough memory for the query", input::exit_not_sent};
    }
    const auto text = [&](Part part) { return values[part].text.data(); };
    vor_cfg_proto_set_op(query.get(), static_cast<vor_uchar>(values[operation].number));
    if (values[line_key].given) {
        vor_cfg_proto_set_line_string(query.get(), text(line_key), text(line_value));
    }
    vor_cfg_proto_set_pattern_string(query.get(), values[pattern_value].given ? 1 : 2, text(pattern_key),
                                     text(pattern_value));
    if (values[priority].given) {
        vor_cfg_proto_set_priority_string(query.get(), text(priority));
    }
    for (std::size_t i = path; i + 1 < values.size(); i += 2) {
        vor_cfg_proto_append_path_elm(query.get(), values[i].text.data(), values[i + 1].text.data());
    }
    return query;
}

} // namespace

Returned make(const Row&, std::span<Value> values)
{
    const Query query = built(values);
    Returned back;
    back.code = vor_cfg_create_sock_endpoint();
    if (back.code == 0) {
        back.code = vor_konfd_bi_dir_comm(query.get());
    }
    if (vor_cfg_get_sock_endpoint() != nullptr) {
        vor_cfg_remove_sock_endpoint();
    }
    return back;
}

} // namespace vorcfg::rows::konfd_query
