// What the library is told to send is what vorsim shows, in the call's own words: the least and the greatest number of
// every argument of every call, over the real platform.
#include <algorithm>
#include <csignal>
#include <sstream>

#include <gtest/gtest.h>

#include "call/prepare.hpp"
#include "call/session.hpp"
#include "example_lines.hpp"
#include "input/secret.hpp"
#include "processes.hpp"

using namespace vorcfg;

namespace {

class Desk {
public:
    Desk() { place_.enter(); }

    // The lines that the gateway prints of a call; none where the argument does not go out beside the others.
    std::vector<std::string> shown(const Line& line)
    try {
        input::Secrets secrets({.literals = true});
        call::PreparedCall planned = call::prepare(line, secrets);
        const std::size_t messages = session_.make(planned).seen.messages.size();
        std::vector<std::string> lines(messages);
        std::ranges::generate(lines, [this] { return gateway_.next_line(); });
        return lines;
    } catch (const input::InputError&) {
        return {};
    }
    int stop() { return gateway_.stop(SIGTERM); }

private:
    processes::Workplace place_;
    processes::Gateway gateway_{place_, {"--strict", "--sap", "65535"}};
    call::Session session_{{}, std::nullopt};
};

// "status 0   manager  call  object words: name=value name=value"
bool tells(const std::string& line, const std::string& name, const std::string& value)
{
    constexpr std::size_t manager = 11;
    if (line.starts_with("REFUSED")) {
        return false;
    }
    std::istringstream words(line.substr(std::min(line.find("  ", manager), line.size())));
    for (std::string word; words >> word;) {
        if (word == name + "=" + value || word == value || word == value + ":" || word.starts_with(value + "/") ||
            word.ends_with("/" + value) || word.ends_with("/" + value + ":")) {
            return true;
        }
    }
    return false;
}

// Of an argument whose values can be told from the gateway's lines.
std::vector<std::string> telling_values(const rows::Row& row, const rows::Argument& argument)
{
    if (argument.kind == rows::Kind::ipv4 && !argument.is_list) {
        return {"0.0.0.1", "255.255.255.255"};
    }
    const bool names_manager = argument.name == "app_sap_id";
    if (argument.is_number() && argument.is_sent && !is_turned(row, argument) && !names_manager) {
        return {std::to_string(argument.range.least), std::to_string(argument.range.most)};
    }
    return {};
}

TEST(shown_values, limits_of_every_argument)
{
    Desk desk;
    const auto is_sent = [](const rows::Row& row) {
        return row.make != nullptr && row.read == nullptr && row.channel == rows::Channel::manager;
    };
    for (const rows::Row* const row : rows_that(is_sent)) {
        for (const auto& [argument, at] : given_arguments(*row)) {
            for (const std::string& value : telling_values(*row, argument)) {
                bool told = false;
                std::string seen;
                for (Line line : variants(*row)) {
                    line[at].text = value;
                    line = argument.choices.empty() ? line : fitted(*row, line);
                    for (const std::string& shown : desk.shown(line)) {
                        told = told || tells(shown, std::string(argument.name), value);
                        seen += "\n  " + shown;
                    }
                }
                EXPECT_TRUE(told) << row->symbol << ' ' << argument.name << ' ' << value << seen;
            }
        }
    }
    EXPECT_EQ(0, desk.stop());
}

} // namespace
