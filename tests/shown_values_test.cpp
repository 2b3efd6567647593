// What the library is told to send is what vorsim shows, in the call's own words: the least and the greatest number of
// every argument of every call, over the real platform.
#include <algorithm>
#include <csignal>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "make/session.hpp"
#include "plan/plan.hpp"
#include "processes.hpp"
#include "rows/families.hpp"
#include "words/secret.hpp"
#include "words/word.hpp"

using namespace vorcfg;

namespace {

using Line = std::vector<Word>;

class Desk {
public:
    Desk() { place_.enter(); }

    // The lines that the gateway prints of a call.
    std::vector<std::string> shown(const Line& line)
    {
        Secrets secrets({.literals = true});
        Planned planned = plan(line, secrets);
        const std::size_t messages = session_.make(planned).seen.messages.size();
        std::vector<std::string> lines(messages);
        std::ranges::generate(lines, [this] { return gateway_.next_line(); });
        return lines;
    }
    int stop() { return gateway_.stop(SIGTERM); }

private:
    processes::Workplace place_;
    processes::Gateway gateway_{place_, {"--strict", "--sap", "65535"}};
    Session session_{{}, std::nullopt};
};

Line example_of(const Row& row)
{
    Line words = words_of(row.full_name() + ' ' + std::string(row.example));
    for (Word& word : words) {
        if (!word.quoted && word.text == "-") {
            word = {"gr33n-m0nsoon", true};
        }
    }
    return words;
}

// The example, and the example with each word of its worded arguments: some numbers travel with one word only.
std::vector<Line> variants(const Row& row)
{
    std::vector<Line> lines{example_of(row)};
    std::size_t at = 2;
    for (const Argument& argument : row.arguments()) {
        for (const Choice& choice : argument.choices) {
            lines.push_back(lines.front());
            lines.back()[at].text = argument.is_number() ? std::to_string(choice.number) : std::string(choice.name);
        }
        at += argument.is_given() ? 1 : 0;
    }
    return lines;
}

// "call  object words: name=value name=value -> ..."
bool tells(const std::string& line, const std::string& name, const std::string& value)
{
    const std::size_t begin = line.find("  ");
    const std::size_t end = line.find(" -> ");
    if (line.starts_with("strict") || begin == line.npos || end == line.npos) {
        return false;
    }
    std::istringstream words(line.substr(begin, end - begin));
    for (std::string word; words >> word;) {
        if (word == name + "=" + value || word == value || word == value + ":" || word.starts_with(value + "/") ||
            word.ends_with("/" + value) || word.ends_with("/" + value + ":")) {
            return true;
        }
    }
    return false;
}

// What a call turns into something else, or does not put into its message.
bool is_turned(const Row& row, const Argument& argument)
{
    static const std::set<std::pair<std::string_view, std::string_view>> turned = {
        {"vor_cfg_set_snmp_server_v3_credentials", "mode"}, // into a tag
        {"vor_cfg_tp_set_app", "app_sap_id"},               // into the manager
        {"vor_cfg_set_debug_info", "en_dis_flag"},          // into a mask of levels
    };
    return turned.contains({row.symbol, argument.name});
}

TEST(values, are_shown_as_they_were_given)
{
    Desk desk;
    for (const Family* const family : families()) {
        for (const Row& row : family->rows) {
            if (row.make == nullptr || row.read != nullptr || row.channel != Channel::manager) {
                continue;
            }
            std::size_t at = 2;
            for (const Argument& argument : row.arguments()) {
                if (!argument.is_given()) {
                    continue;
                }
                const std::size_t here = at++;
                std::vector<std::string> values;
                if (argument.kind == Kind::ipv4 && !argument.is_list) {
                    values = {"0.0.0.1", "255.255.255.255"};
                } else if (argument.is_number() && argument.is_sent && !is_turned(row, argument)) {
                    values = {std::to_string(argument.range.least), std::to_string(argument.range.most)};
                }
                for (const std::string& value : values) {
                    bool told = false;
                    std::string seen;
                    for (Line line : variants(row)) {
                        line[here].text = value;
                        for (const std::string& shown : desk.shown(line)) {
                            told = told || tells(shown, std::string(argument.name), value);
                            seen += "\n  " + shown;
                        }
                    }
                    EXPECT_TRUE(told) << row.symbol << ' ' << argument.name << ' ' << value << seen;
                }
            }
        }
    }
    EXPECT_EQ(0, desk.stop());
}

} // namespace
