#include "serve/request.hpp"

#include <algorithm>
#include <memory>
#include <utility>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "rows/reading.hpp"
#include "text/json.hpp"
#include "text/nearest.hpp"
#include "text/options.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorcfg::serve {

using vor::Json;

namespace {

[[noreturn]] void fail(std::string text, std::string_view member = {}, std::string hint = {})
{
    throw input::InputError{.text = std::move(text), .argument = std::string(member), .hint = std::move(hint)};
}

// As much of a name as its client needs to find it.
std::string shown(std::string_view name)
{
    constexpr std::size_t longest = 100;
    return vor::quoted(name, longest);
}

// C ends a text there.
void refuse_zero_bytes(const Json& json, std::string_view member)
{
    if (json.is_string() && json.string().find('\0') != std::string::npos) {
        fail(fmt::format("{} must not contain a zero byte", member), member);
    }
    if (json.is_array()) {
        for (const Json& element : json.elements()) {
            refuse_zero_bytes(element, member);
        }
    }
    if (json.is_object()) {
        for (const auto& [name, value] : json.members()) {
            refuse_zero_bytes(value, name);
        }
    }
}

const std::string& text_of(const Json& request, std::string_view member)
{
    const Json* const found = request.find(member);
    if (found == nullptr) {
        fail(fmt::format("needs {}", member), member);
    }
    if (!found->is_string()) {
        fail(fmt::format("{} must be a text", member), member);
    }
    return found->string();
}

bool is_whole_number(const Json& json)
{
    return json.type() == Json::Type::integer || json.type() == Json::Type::natural;
}

// --- Calls ----------------------------------------------------------------------------

// What is given for an argument is a word of its own, in quotes: a text never says where a secret comes from.
input::Word word_of(std::string text, std::size_t named)
{
    return {{.text = std::move(text), .quoted = true, .named = named}};
}

// The value as it would be typed, where it is of the argument's kind.
std::string typed(const rows::Row& row, const rows::Argument& argument, const Json& value)
{
    if (value.is_string()) {
        return value.string();
    }
    if (argument.is_number() && is_whole_number(value)) {
        return vor::dump(value);
    }
    const bool shows = !rows::may_hold_secret(row, {}) && !value.is_array() && !value.is_object();
    const bool is_real = argument.is_number() && value.type() == Json::Type::real;
    fail(fmt::format("{} must be {}{}{}", argument.name, is_real ? "a whole number, " : "",
                     argument.is_number() ? rows::accepted(argument) : "a text",
                     shows ? ", not " + vor::dump(value) : ""),
         argument.name);
}

void add_argument(const rows::Row& row, const std::string& name, const Json& value, std::vector<input::Word>& words)
{
    const auto add = [&](const std::string& text) { words.push_back(word_of(name + '=' + text, name.size())); };
    const auto arguments = row.arguments();
    const auto argument = std::ranges::find_if(
        arguments, [&](const rows::Argument& each) { return each.is_given() && each.name == name; });
    if (name.empty()) {
        fail("an argument's name must not be empty", "arguments");
    } else if (argument == arguments.end()) {
        add(""); // refused by its name
    } else if (!argument->is_list) {
        add(typed(row, *argument, value));
    } else if (value.is_array()) {
        for (const Json& each : value.elements()) {
            add(typed(row, *argument, each));
        }
    } else {
        fail(fmt::format("{} must be a list", name), name);
    }
}

// Those of a call that reads its own words.
void add_words(const Json& arguments, std::vector<input::Word>& words)
{
    if (!arguments.is_array() || !std::ranges::all_of(arguments.elements(), &Json::is_string)) {
        fail("arguments of this call must be a list of texts, the words of its command line", "arguments");
    }
    for (const Json& each : arguments.elements()) {
        words.push_back(word_of(each.string(), 0));
        words.back().quoted = !each.string().starts_with("--");
    }
}

void add_arguments(const rows::Row& row, const Json& arguments, std::vector<input::Word>& words)
{
    if (row.read != nullptr) {
        add_words(arguments, words);
        return;
    }
    if (!arguments.is_object()) {
        fail("arguments must be an object: values by their arguments' names", "arguments");
    }
    for (const auto& [name, value] : arguments.members()) {
        add_argument(row, name, value, words);
    }
}

std::vector<input::Word> words_of_call(const Json& request)
{
    const std::string& call = text_of(request, "call");
    const std::size_t family_end = std::min(call.find(' '), call.size());
    if (call.find_first_of(" \t\r\n", family_end + 1) != std::string::npos || family_end == call.size()) {
        fail("call must be a family and a call such as \"can set-id\", without values", "call"); // perhaps secrets
    }
    const std::string family = call.substr(0, family_end);
    const std::string name = call.substr(family_end + 1);
    const rows::Row& row = rows::require_row(family, name);
    std::vector<input::Word> words{word_of(family, 0), word_of(name, 0)};
    try {
        const Json* const arguments = request.find("arguments");
        add_arguments(row, arguments != nullptr ? *arguments : Json::object(), words);
    } catch (input::InputError& error) {
        error.call = row.full_name();
        throw;
    }
    return words;
}

// --- Commands -------------------------------------------------------------------------

enum class Over : std::uint8_t { calls, site, journal };

struct Served {
    std::string_view command;
    Over over;
    std::string_view own{}; // a member that no other command has
};

constexpr std::string_view of_member = "of";
constexpr std::string_view text_of_journal = "text";

constexpr Served all_served[] = {{"describe", Over::calls, of_member},
                                 {"plan", Over::site},
                                 {"apply", Over::site},
                                 {"confirm", Over::journal},
                                 {"revert", Over::journal},
                                 {"report", Over::journal},
                                 {journal_command, Over::journal, text_of_journal}};

constexpr std::string_view site_members[] = {"site", "file", "vars", "secrets"};
// Which journal it is.
constexpr std::string_view journal_members[] = {"journal", "gateway", "allow_unused"};

bool is_among(std::span<const std::string_view> names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
}

const Served& served_command(const std::string& name)
{
    const auto found = std::ranges::find(all_served, name, &Served::command);
    if (found == std::end(all_served)) {
        std::vector<std::string> known;
        for (const Served& each : all_served) {
            known.emplace_back(each.command);
        }
        fail(fmt::format("no command {}{}", shown(name),
                         vor::suggestion(vor::nearest(name, known), "expected " + vor::alternatives(known))),
             "command");
    }
    return *found;
}

void add_variables(const Json& request, std::string_view member, bool secret, bool needed, input::Variables& variables)
{
    const Json* const given = request.find(member);
    if (given != nullptr && !given->is_object()) {
        fail(fmt::format("{} must be an object: values by their variables' names", member), member);
    }
    for (const auto& [name, value] : given != nullptr ? given->members() : Json::Object()) {
        if (name.empty() || vor::name_length(name) != name.size()) {
            fail(fmt::format("a variable's name must be letters, digits and _, not {}", shown(name)), member);
        }
        if (!value.is_string() && !is_whole_number(value)) {
            fail(fmt::format("variable \"{}\" must be a text or a whole number", name), member);
        }
        const Json* const others = request.find("vars");
        if (secret && others != nullptr && others->contains(name)) {
            fail(fmt::format("variable \"{}\" is given twice", name), member);
        }
        variables.add(
            name, {.value = value.is_string() ? value.string() : vor::dump(value), .secret = secret, .needed = needed});
    }
}

// Without one, a command over a journal has nothing but the journal.
void require_site(const Json& request)
{
    for (const auto& [name, value] : request.members()) {
        if (is_among(site_members, name) || (is_among(journal_members, name) && name != journal_members[0])) {
            fail(fmt::format("{} needs site", name), name);
        }
    }
}

std::shared_ptr<const input::GivenFile> file_in(const Json& request, bool needed)
{
    auto file = std::make_shared<input::GivenFile>();
    file->text = text_of(request, "site");
    add_variables(request, "vars", false, needed, file->variables);
    add_variables(request, "secrets", true, needed, file->variables);
    return file;
}

// --- Options --------------------------------------------------------------------------

// As a member: without dashes in front, with underscores for the others.
std::string member_of(const input::OptionRow& row)
{
    std::string name(row.name.substr(2));
    std::ranges::replace(name, '-', '_');
    return name;
}

// Null for a call.
bool takes(const Served* served, const input::OptionRow& row)
{
    if (!row.in_requests) {
        return false;
    }
    if (served == nullptr) {
        return input::takes_option(row, input::a_call) || input::takes_option(row, "serve");
    }
    return input::takes_option(row, served->command) ||
           (served->over == Over::journal && is_among(journal_members, member_of(row)));
}

void take(const input::OptionRow& row, const Json& value, const Served* served, input::Options& options)
{
    const std::string name = member_of(row);
    input::OptionRow named = row;
    named.name = name;
    if (!takes(served, row)) {
        std::vector<std::string_view> takers;
        for (const Served& each : all_served) {
            if (takes(&each, row)) {
                takers.push_back(each.command);
            }
        }
        if (takes(nullptr, row)) {
            takers.push_back(input::a_call);
        }
        fail(fmt::format("{} is for {}, not for {}", name, vor::alternatives(takers),
                         served != nullptr ? served->command : input::a_call));
    }
    const auto fail_kind = [&](std::string_view kind) { fail(fmt::format("{} must be {}", name, kind), name); };
    try {
        if (!row.value.empty()) {
            if (!value.is_string() && !is_whole_number(value)) {
                fail_kind("a text or a whole number");
            }
            row.take(options, named, value.is_string() ? value.string() : vor::dump(value));
        } else if (value.type() != Json::Type::boolean) {
            fail_kind("true or false");
        } else if (value.boolean()) {
            row.take(options, named, {});
        }
    } catch (input::InputError& error) {
        error.argument = name;
        throw;
    }
}

// The members besides the options.
std::vector<std::string_view> own_members(const Served* served)
{
    if (served == nullptr) {
        return {"id", "call", "arguments"};
    }
    std::vector<std::string_view> members{"id", "command"};
    if (served->over != Over::calls) {
        members.insert(members.end(), std::begin(site_members), std::end(site_members));
    }
    if (!served->own.empty()) {
        members.push_back(served->own);
    }
    return members;
}

[[noreturn]] void fail_unknown(std::string_view name, const Served* served)
{
    std::vector<std::string> known;
    for (const std::string_view each : own_members(served)) {
        known.emplace_back(each);
    }
    for (const input::OptionRow& row : input::option_rows()) {
        if (takes(served, row)) {
            known.push_back(member_of(row));
        }
    }
    fail(fmt::format("unknown member {}{}", shown(name),
                     vor::suggestion(vor::nearest(name, known), "expected " + vor::alternatives(known))));
}

void take_options(const Json& request, const Served* served, input::Options& options)
{
    const auto rows = input::option_rows();
    const std::vector<std::string_view> own = own_members(served);
    for (const Json::Member& member : request.members()) {
        if (is_among(own, member.first)) {
            continue;
        }
        const auto row = std::ranges::find_if(
            rows, [&](const input::OptionRow& each) { return each.in_requests && member_of(each) == member.first; });
        if (row == rows.end()) {
            fail_unknown(member.first, served);
        }
        take(*row, member.second, served, options);
    }
}

} // namespace

Json object_in(std::string_view line)
try {
    Json request = Json::parse(line, {.repeated_names = false});
    if (!request.is_object()) {
        fail("a request must be an object of JSON");
    }
    return request;
} catch (const vor::JsonLimit& error) {
    fail(fmt::format("a request must not have {}", error.what()));
} catch (const vor::JsonError&) { // which quotes what it could not read
    fail("a request must be an object of JSON on one line");
}

std::string id_of(const Json& request)
{
    const Json* const id = request.find("id");
    if (id == nullptr) {
        fail("needs id", "id");
    }
    if (!id->is_string() && !is_whole_number(*id)) {
        fail("id must be a text or a whole number", "id");
    }
    return vor::dump(*id);
}

Request request_in(const Json& json)
{
    if (json.contains("call") == json.contains("command")) {
        fail("needs either call or command");
    }
    refuse_zero_bytes(json, "request");
    Request request{.is_call = json.contains("call")};
    request.options.json = true;
    if (request.is_call) {
        take_options(json, nullptr, request.options);
        request.options.words = words_of_call(json);
        return request;
    }
    const Served& served = served_command(text_of(json, "command"));
    take_options(json, &served, request.options);
    request.options.words = {word_of(std::string(served.command), 0)};
    if (served.over == Over::calls) {
        for (input::Word& word : input::words_of(json.contains(of_member) ? text_of(json, of_member) : "")) {
            request.options.words.push_back(std::move(word));
        }
        return request;
    }
    const bool has_site = served.over == Over::site || json.contains("site");
    request.finds_journal = served.over == Over::journal && has_site;
    if (has_site) {
        request.options.file = file_in(json, !request.options.allow_unused);
    } else if (request.options.journal.empty()) {
        fail("needs journal or site");
    } else {
        require_site(json);
    }
    const std::string file = json.contains("file") ? text_of(json, "file") : "-";
    if (file.empty()) {
        fail("file must not be empty", "file");
    }
    request.options.words.push_back(word_of(has_site ? file : request.options.journal, 0));
    if (json.contains(text_of_journal)) {
        request.text = text_of(json, text_of_journal);
    }
    return request;
}

} // namespace vorcfg::serve
