#include "konfd_query.hpp"

#include <array>
#include <memory>

#include <vorinfra.h>

#include "complaint.hpp"

namespace vorcfg {

// A planned query: its operation, then each option's words. `number` tells
// which option a value belongs to.
enum Part : std::int64_t {
    operation,
    line_key,
    line_value,
    pattern_key,
    pattern_value,
    path_key,
    path_value,
    priority
};

static constexpr std::string_view part_names[] = {"operation",     "line key", "line value", "pattern key",
                                                  "pattern value", "path key", "path value", "priority"};

struct Option {
    std::string_view name;
    std::array<Part, 2> parts;
    std::size_t least;
    std::size_t most;
    bool repeats;
};

static constexpr Option options[] = {
    {"--line", {line_key, line_value}, 2, 2, false},
    {"--pattern", {pattern_key, pattern_value}, 1, 2, false},
    {"--path", {path_key, path_value}, 2, 2, true},
    {"--priority", {priority, priority}, 1, 1, false},
};

struct Operation {
    std::string_view name;
    vor_uchar code;
};

static constexpr vor_uchar unset = 3;
static constexpr Operation operations[] = {{"--set", 1}, {"--check", 2}, {"--unset", unset}};

// The library's clean-up leaves the path's records to whoever wants them.
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

static vor_char* text_of(std::span<Value> values, Part part)
{
    for (Value& value : values) {
        if (value.number == part && &value != values.data()) {
            return value.text.data();
        }
    }
    return nullptr;
}

static Query built(std::span<Value> values)
{
    Query query(vor_cfg_proto_init());
    if (query == nullptr) {
        throw Complaint("no memory for the query", exit_not_sent);
    }
    vor_cfg_proto_set_op(query.get(), vor_uchar(values.front().number));
    if (vor_char* const key = text_of(values, line_key)) {
        vor_cfg_proto_set_line_string(query.get(), key, text_of(values, line_value));
    }
    if (vor_char* const key = text_of(values, pattern_key)) {
        vor_char* const value = text_of(values, pattern_value);
        vor_cfg_proto_set_pattern_string(query.get(), value != nullptr ? 1 : 2, key, value);
    }
    if (vor_char* const value = text_of(values, priority)) {
        vor_cfg_proto_set_priority_string(query.get(), value);
    }
    for (std::size_t i = 1; i + 1 < values.size(); i++) {
        if (values[i].number == path_key) {
            vor_cfg_proto_append_path_elm(query.get(), values[i].text.data(), values[i + 1].text.data());
        }
    }
    return query;
}

static Returned send_query(std::span<Value> values, const std::vector<Argument>&)
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

static constexpr Row make_query_row()
{
    Row row{"konfd",
            "query",
            {},
            "Edits the stored configuration with one query.",
            "--set --line mtu 1400 --pattern mtu \"[0-9]+\" --path interface eth1",
            {},
            {}};
    row.channel = Channel::konfd;
    row.call = send_query;
    return row;
}

constexpr Row query_row = make_query_row();

constexpr std::string_view query_options =
    "  --set, --check, --unset  put the line, ask whether it is there, take it away\n"
    "  --line KEY VALUE         the line \"KEY VALUE\"; --unset takes none\n"
    "  --pattern KEY [VALUE]    the lines meant, as a regular expression: ^KEY VALUE$, or ^KEY$ alone\n"
    "  --path KEY VALUE         one step down to where the line stands, outermost first\n"
    "  --priority N             where the line stands among others\n";

bool is_query(const Row& row)
{
    return row.call == send_query;
}

// Reads the words of one option, and says where the next one begins.
static std::size_t read_option(const Option& option, std::span<const Token> tokens, std::size_t at, Planned& planned,
                               const SecretSources& sources)
{
    std::size_t taken = 0;
    bool secret_follows = false;
    while (taken < option.most && at + 1 + taken < tokens.size()) {
        const Token& token = tokens[at + 1 + taken];
        if (!token.quoted && token.text.starts_with("--")) {
            break;
        }
        const Part part = option.parts[taken];
        const std::size_t index = at + 1 + taken;
        Value value{part, {}, secret_follows};
        value.text = secret_follows ? secret(token, "password", sources) : token.text;
        check_konfd_text(part_names[part], value.text, index);
        if (part == priority && !number_of(value.text)) {
            throw Complaint("priority: \"" + value.text + "\" is no number", exit_usage, index);
        }
        secret_follows = taken == 0 && value.text == "password";
        planned.values.push_back(std::move(value));
        taken++;
    }
    if (taken < option.least) {
        throw Complaint(std::string(option.name) + ": its " + std::string(part_names[option.parts[taken]]) +
                            " is missing",
                        exit_usage, at);
    }
    return at + 1 + taken;
}

Planned plan_query(const Row& row, std::span<const Token> tokens, const SecretSources& sources)
{
    Planned planned{&row, {}, {Value{}}, {}};
    std::size_t at = 0;
    while (at < tokens.size()) {
        const std::string& word = tokens[at].text;
        bool known = false;
        for (const Operation& each : operations) {
            if (word == each.name) {
                if (planned.values.front().number != 0) {
                    throw Complaint("one of --set, --check and --unset is enough", exit_usage, at);
                }
                planned.values.front().number = each.code;
                known = true;
                at++;
                break;
            }
        }
        for (const Option& option : options) {
            if (!known && word == option.name) {
                if (!option.repeats && text_of(planned.values, option.parts[0]) != nullptr) {
                    throw Complaint(word + " is given twice", exit_usage, at);
                }
                at = read_option(option, tokens, at, planned, sources);
                known = true;
            }
        }
        if (!known) {
            throw Complaint("unknown word \"" + word +
                                "\"; wanted: --set|--check|--unset --line KEY VALUE --pattern KEY [VALUE] "
                                "[--path KEY VALUE]... [--priority N]",
                            exit_usage, at);
        }
    }
    const std::int64_t code = planned.values.front().number;
    if (code == 0) {
        throw Complaint("--set, --check or --unset is missing", exit_usage, at);
    }
    const bool lined = text_of(planned.values, line_key) != nullptr;
    if (lined == (code == unset)) {
        throw Complaint(lined ? "--unset takes no --line" : "--line is missing", exit_usage, at);
    }
    if (text_of(planned.values, pattern_key) == nullptr) {
        throw Complaint("--pattern is missing", exit_usage, at);
    }
    return planned;
}

} // namespace vorcfg
