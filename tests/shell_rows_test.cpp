// vorcfg's rows: against the headers, and each argument's least and most at the platform's boundary.
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <set>

#include <device_mgmt.hpp>
#include <gtest/gtest.h>

#include "call/session.hpp"
#include "example_lines.hpp"
#include "help/help.hpp"
#include "output/output.hpp"
#include "processes.hpp"
#include "rows/contract.hpp"
#include "text/text.hpp"

using namespace vorcfg;

namespace {

using Names = std::set<std::string>;

const std::filesystem::path source = VOR_SOURCE_DIR;

TEST(rows, match_declared_calls)
{
    Names rows;
    Names names;
    for (const rows::Row* const row : rows_that([](const rows::Row& each) { return each.read == nullptr; })) {
        EXPECT_TRUE(rows.emplace(row->symbol).second) << row->symbol << " has two rows";
        EXPECT_TRUE(names.insert(row->full_name()).second) << row->full_name();
    }
    Names declared;
    for (const rows::Family* const family : rows::families()) {
        for (const rows::CallContract& call : rows::contract_of(*family).calls) {
            declared.insert(call.symbol);
        }
    }
    Names alone;
    std::ranges::set_symmetric_difference(rows, declared, std::inserter(alone, alone.end()));
    EXPECT_EQ(alone, Names()) << "have a row or a declaration, not both";
}

// The wrapper sees a code and vor_errno, vorcfg the exchange: what the one reports must never be better than the
// other's.
TEST(wrapper, outcomes_are_never_better_than_verdicts)
{
    using device_mgmt::Outcome, device_mgmt::detail::Way;
    std::map<std::string_view, Way> ways;
#define WAY(symbol, way) ways[#symbol] = Way::way;
    DEVICE_MGMT_WAYS(WAY)
#undef WAY
    using enum call::Pretence::Fate;
    const std::map<Outcome, std::set<call::Outcome>> never_better{
        {Outcome::accepted, {call::Outcome::accepted, call::Outcome::done}},
        {Outcome::sent, {call::Outcome::sent}},
        {Outcome::refused, {call::Outcome::refused}},
        {Outcome::not_sent, {call::Outcome::not_sent, call::Outcome::rejected, call::Outcome::no_endpoint}},
    };
    std::set<Outcome> met;
    for (const rows::Row* const row : rows_that([](const rows::Row& each) { return each.make != nullptr; })) {
        const Way way = ways.contains(row->symbol) ? ways[row->symbol] : Way::request;
        if (way == Way::nothing || way == Way::local) {
            continue;
        }
        for (const call::Pretence& pretence :
             {call::Pretence{}, call::Pretence{.status = 7}, call::Pretence{.status = 1}, call::Pretence{.status = {}},
              call::Pretence{.answer_id = 1}, call::Pretence{.konfd = "-e"}, call::Pretence{.konfd = "??"},
              call::Pretence{.fate = refused}, call::Pretence{.fate = lost}, call::Pretence{.fate = no_buffer},
              call::Pretence{.fate = unconnected}}) {
            call::PreparedCall call = call::prepare_example(*row);
            const call::CallResult result =
                call::Session({.capture = true, .pretence = pretence}, std::nullopt).make(call);
            const bool bound = pretence.fate != unconnected;
            const vor_int32 code = result.back.missing ? VOR_CODE_REFUSED : result.back.code.value_or(0);
            const call::Verdict verdict = call::judged(*row, result.back, result.manager_errno, result.seen);
            const Outcome outcome = device_mgmt::detail::outcome_of(way, code, result.manager_errno, bound);
            met.insert(outcome);
            const auto found = never_better.find(outcome);
            EXPECT_TRUE(found == never_better.end() || found->second.contains(verdict.outcome))
                << row->symbol << " fate " << static_cast<int>(pretence.fate) << " returned " << code
                << ", the wrapper says " << static_cast<int>(outcome) << ", vorcfg: " << verdict.text;
        }
    }
    EXPECT_EQ(met.size(), 5U);
}

TEST(rows, argument_names_match_headers)
{
    for (const rows::Row* const row :
         rows_that([](const rows::Row& each) { return each.make != nullptr && each.read == nullptr; })) {
        std::vector<std::string> documented;
        for (const auto& [name, text] : rows::contract_of(*row).arguments) {
            documented.push_back(name);
        }
        std::vector<std::string> named;
        for (const rows::Argument& argument : row->arguments()) {
            named.emplace_back(argument.is_list ? "..." : argument.name);
        }
        EXPECT_EQ(named, documented) << row->symbol;
    }
}

// --- Lines, tried -----------------------------------------------------------------

struct Trial {
    std::optional<input::InputError> complaint;
    call::PreparedCall planned;
    std::vector<call::Message> messages;
};

Trial tried(const Line& words)
{
    input::Secrets secrets({.literals = true});
    Trial trial;
    try {
        trial.planned = call::prepare(words, secrets);
        call::rehearse(trial.planned);
        trial.messages = call::Session({.capture = true}, std::nullopt).make(trial.planned).seen.messages;
    } catch (const input::InputError& complaint) {
        trial.complaint = complaint;
    }
    return trial;
}

// All bytes that go out, in whatever form.
std::string bytes_of(const std::vector<call::Message>& messages)
{
    std::string bytes;
    for (const call::Message& message : messages) {
        bytes += std::to_string(message.sap) + '/' + std::to_string(message.id) + '/' +
                 std::to_string(message.option.value_or(0)) + '/' + std::to_string(message.flag.value_or(0)) + '/';
        for (const call::Element& element : message.elements) {
            bytes += std::to_string(element.tag) + ' ' + std::to_string(element.number) + ' ' + element.bytes + '|';
        }
        bytes += message.record + message.command;
    }
    return bytes;
}

bool carries(const call::Message& message, const rows::Row& row, const std::string& text)
{
    const auto fields = call::fields_of(message, row).value_or(std::vector<rows::Field>());
    return std::ranges::any_of(message.elements, [&](const call::Element& each) { return each.bytes == text; }) ||
           message.record.find(text + '\0') != std::string::npos || message.command.find(text) != std::string::npos ||
           std::ranges::any_of(fields, [&](const rows::Field& field) { return field.text == text; });
}

bool arrives(const Trial& trial, const std::string& value)
{
    return std::ranges::any_of(
        trial.messages, [&](const call::Message& message) { return carries(message, *trial.planned.row, value); });
}

std::string complaint_about(const Line& line)
{
    const Trial trial = tried(line);
    return trial.complaint ? trial.complaint->argument : "nothing";
}

// The least and the greatest number are accepted and differ, each word equals its number; one beyond is refused by
// name. That they arrive as given is tested by shown_values_test.
std::string fault_of_number(const rows::Row& row, const rows::Argument& argument, Line line, std::size_t at)
{
    std::set<std::string> seen;
    for (const std::int64_t number : {argument.range.least, argument.range.most}) {
        line[at].text = std::to_string(number);
        const Trial trial = tried(argument.choices.empty() ? line : fitted(row, line));
        if (trial.complaint || !seen.insert(bytes_of(trial.messages)).second) {
            return line[at].text + " is refused, or sends what another number sends";
        }
    }
    for (const std::int64_t beyond : {argument.range.least - 1, argument.range.most + 1}) {
        line[at].text = std::to_string(beyond);
        if (complaint_about(line) != argument.name) {
            return line[at].text + " is accepted, or not refused by its name";
        }
    }
    for (const rows::Choice& choice : argument.choices) {
        line[at].text = choice.name;
        const std::string bytes = bytes_of(tried(fitted(row, line)).messages);
        line[at].text = std::to_string(choice.number);
        if (bytes.empty() || bytes != bytes_of(tried(fitted(row, line)).messages)) {
            return std::string(choice.name) + " is not " + line[at].text;
        }
    }
    return "";
}

std::string fault_of_choices(const rows::Row& row, const rows::Argument& argument, Line line, std::size_t at)
{
    std::set<std::string> seen;
    for (const rows::Choice& choice : argument.choices) {
        line[at].text = choice.name;
        const Trial trial = tried(line);
        const bool silent = choice.name == "ipc"; // switches the platform's own trace
        if (trial.complaint || !seen.insert(bytes_of(trial.messages)).second) {
            return std::string(choice.name) + " is refused, or sends what another word sends";
        }
        if (!silent && !is_turned(row, argument) && !arrives(trial, std::string(choice.name))) {
            return std::string(choice.name) + " does not arrive";
        }
    }
    line[at].text = "nobody";
    return complaint_about(line) == argument.name ? "" : "an unknown word is accepted";
}

// The largest size for which the line is accepted.
std::size_t most_accepted(const std::function<Line(std::size_t)>& line_of)
{
    std::size_t accepted = 1;
    std::size_t refused = 70000;
    while (accepted + 1 < refused) {
        const std::size_t middle = (accepted + refused) / 2;
        (tried(line_of(middle)).complaint ? refused : accepted) = middle;
    }
    return accepted;
}

// The longest text accepted arrives whole; one byte more is refused by name. konfd's commands have any length.
std::string fault_of_text(const rows::Row& row, const rows::Argument& argument, const Line& line, std::size_t at)
{
    const auto with = [&](std::size_t size) {
        Line changed = line;
        changed[at] = {std::string(size, 'x'), true};
        return changed;
    };
    const bool any_length = row.channel == rows::Channel::konfd;
    const std::size_t most = any_length ? 5000 : most_accepted(with);
    if (!arrives(tried(with(most)), std::string(most, 'x'))) {
        return std::to_string(most) + " bytes are accepted and do not arrive whole";
    }
    if (!any_length && complaint_about(with(most + 1)) != argument.name) {
        return std::to_string(most + 1) + " bytes are not refused by name";
    }
    return "";
}

std::string fault_of_address(const rows::Argument& argument, Line line, std::size_t at)
{
    for (const char* const word : {"1.2.3.4", "255.255.255.255"}) {
        line[at].text = word;
        const Trial trial = tried(line);
        if (trial.complaint || !std::ranges::any_of(trial.messages, [&](const call::Message& message) {
                return call::described(message, *trial.planned.row, trial.planned.values).find(word) !=
                       std::string::npos;
            })) {
            return std::string(word) + " is refused, or not shown in the message";
        }
    }
    for (const char* const word : {"1.2.3", "1.2.3.256", "1.2.3.4xyz", "10.1", ""}) {
        line[at].text = word;
        if (complaint_about(line) != argument.name) {
            return std::string(word) + " is accepted";
        }
    }
    return "";
}

// As many as a message holds arrive; one more is refused by name.
std::string fault_of_list(const rows::Argument& argument, const Line& line, std::size_t at)
{
    const auto with = [&](std::size_t size) {
        Line changed(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(at));
        changed.resize(at + size, {argument.kind == rows::Kind::ipv4 ? "9.9.9.9" : "x", true});
        return changed;
    };
    const std::size_t most = most_accepted(with);
    const std::vector<call::Message> messages = tried(with(most)).messages;
    const std::size_t before = tried(with(0)).messages.at(0).elements.size();
    if (messages.empty() || messages[0].elements.size() != before + most) {
        return "not all of " + std::to_string(most) + " arrive";
    }
    return complaint_about(with(most + 1)) == argument.name ? "" : "one more is not refused by name";
}

std::string fault_of(const rows::Row& row, const rows::Argument& argument, const Line& line, std::size_t at)
{
    if (argument.is_list) {
        return fault_of_list(argument, line, at);
    }
    if (argument.is_number()) {
        return fault_of_number(row, argument, line, at);
    }
    if (!argument.choices.empty()) {
        return fault_of_choices(row, argument, line, at);
    }
    return argument.kind == rows::Kind::ipv4 ? fault_of_address(argument, line, at)
                                             : fault_of_text(row, argument, line, at);
}

// No value is sent that the call would mangle, and no two words send the same: for some word of the worded
// arguments beside it, if there are any.
TEST(rows, limits_of_every_argument)
{
    const auto sends = [](const rows::Row& row) {
        return row.make != nullptr && row.channel != rows::Channel::none && row.read == nullptr;
    };
    for (const rows::Row* const row : rows_that(sends)) {
        const std::vector<Line> lines = variants(*row);
        for (const auto& [argument, at] : given_arguments(*row)) {
            std::string fault = argument.is_sent ? "no line to try" : "";
            for (std::size_t i = 0; i < lines.size() && !fault.empty(); i++) {
                fault = fault_of(*row, argument, lines[i], at);
            }
            EXPECT_EQ(fault, "") << row->full_name() << ' ' << argument.name;
        }
    }
}

// Every call runs, nothing reaches the platform, and what is shown of a secret is the mask alone.
TEST(rows, dry_run_shows_no_secret)
{
    for (const rows::Row* const row : rows_that([](const rows::Row& each) { return each.make != nullptr; })) {
        input::Secrets secrets({.literals = true});
        call::PreparedCall planned = call::prepare(example_of(*row), secrets);
        const call::CallResult report = call::Session({.capture = true}, std::nullopt).make(planned);
        EXPECT_EQ(row->channel == rows::Channel::none, report.seen.messages.empty()) << row->symbol;
        EXPECT_EQ(input::exit_ok, call::exit_of(report.verdict.outcome)) << row->symbol << report.verdict.text;
        const std::string shown = output::text_of(planned, report) + output::json_of(planned, report);
        EXPECT_EQ(std::string::npos, shown.find(secret)) << shown;
        EXPECT_EQ(std::ranges::any_of(row->arguments(), &rows::Argument::is_secret),
                  shown.find(vor::mask) != std::string::npos)
            << shown;
    }
}

// Wherever a passphrase lands by mistake, no complaint repeats it.
TEST(rows, errors_repeat_no_secret)
{
    const auto has_secret = [](const rows::Row& row) {
        return std::ranges::any_of(row.arguments(), &rows::Argument::is_secret);
    };
    for (const rows::Row* const row : rows_that(has_secret)) {
        const Line line = example_of(*row);
        for (std::size_t at = 2; at <= line.size(); at++) {
            Line wrong = line;
            wrong.insert(wrong.begin() + static_cast<std::ptrdiff_t>(at), {"mons00n", false});
            wrong.resize(line.size() + 1 + at % 2, {"mons00n", false});
            const Trial trial = tried(wrong);
            ASSERT_TRUE(trial.complaint) << row->full_name();
            const std::string shown = output::text_of(*trial.complaint) + output::json_of(*trial.complaint);
            EXPECT_EQ(shown.find("mons00n"), std::string::npos) << shown;
            EXPECT_EQ(shown.find(secret), std::string::npos) << shown;
        }
    }
}

std::size_t widest_line(const std::string& text)
{
    std::size_t widest = 0;
    for (const std::string_view line : vor::lines_in(text)) {
        const bool is_command = line.starts_with("Example: ");
        widest = is_command ? widest : std::max(widest, vor::characters_in(line));
    }
    return widest;
}

TEST(help, fits_the_screen)
{
    std::vector<std::pair<std::string, std::string>> texts{
        {help::brief_help(), help::help()}}; // on one screen, and in full
    for (const rows::Row* const row : rows_that([](const rows::Row&) { return true; })) {
        texts.emplace_back(help::brief_help(*row->family), help::help(*row->family));
        texts.emplace_back(help::brief_help(*row), help::help(*row));
    }
    for (const input::Command& command : input::commands()) {
        texts.emplace_back(help::brief_help(command), help::help(command));
    }
    for (const auto& [brief, full] : texts) {
        EXPECT_LE(widest_line(brief + full), 80U) << full;
        EXPECT_LE(std::ranges::count(brief, '\n'), 24) << brief;
    }
}

class Page : public testing::TestWithParam<std::string> {};

TEST_P(Page, is_up_to_date)
{
    const processes::Workplace workplace;
    processes::Gateway gateway(workplace, {"--strict"});
    const std::filesystem::path file = source / "docs/calls" / (GetParam() + ".md");
    const processes::Output page = workplace.run("vorcfg-page " + GetParam());
    EXPECT_EQ(0, page.exit_code) << page.text;
    EXPECT_EQ(0, gateway.stop(SIGTERM));
    if (std::getenv("VOR_REGENERATE") != nullptr && !HasFailure()) {
        std::ofstream(file) << page.text;
    } else {
        EXPECT_EQ(processes::contents(file), page.text) << "run scripts/regenerate";
    }
}

std::vector<std::string> headers()
{
    Names names;
    for (const rows::Family* const family : rows::families()) {
        names.emplace(family->header);
    }
    return {names.begin(), names.end()};
}

INSTANTIATE_TEST_SUITE_P(headers, Page, testing::ValuesIn(headers()), [](const auto& header) { return header.param; });

} // namespace
