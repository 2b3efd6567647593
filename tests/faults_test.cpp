// Fault rules: what they say, what is wrong with them, when they are due.
#include <algorithm>
#include <fstream>

#include <gtest/gtest.h>

#include "faults/parse.hpp"
#include "faults/rule_list.hpp"
#include "processes.hpp"

namespace {

using namespace vorsim::faults;
using namespace std::chrono_literals;

// The column and the text of what is wrong; empty when nothing is.
std::string wrong_with(const std::string& line)
{
    try {
        parse_rule(line);
        return "";
    } catch (const RuleError& complaint) {
        return std::to_string(complaint.column) + ": " + complaint.what();
    }
}

TEST(fault_rules, accepted_forms)
{
    for (const char* const line :
         {"any chance 0.25%: never", "SAP 77 0x4d001 11th: id 0x7003", "240: short 2 bytes, 5 times",
          "any from SAP 4096 \"port 3\": die 2m", "konfd: hang up, for 10s", "canmgr:status -1,once # why not"}) {
        EXPECT_EQ("", wrong_with(line)) << line;
    }
    EXPECT_EQ("canmgr: id high, once", parse_rule("  canmgr: id high, once   # a comment").text);
    EXPECT_EQ("answer \"-e\"", parse_rule("konfd: answer \"-e\", once").action_text);
}

TEST(fault_rules, errors_name_column_and_expectation)
{
    const std::pair<const char*, const char*> table[] = {
        {"canmgrr: status 7", "1: \"canmgrr\"; expected a manager, SAP N, any or konfd; is it canmgr?"},
        {"SAP 65536: never", "5: \"65536\"; expected a number from 0 to 65535"},
        {"canmgr",
         "7: the rule ends here; expected a call, an id, \"OBJECT\", from SAP N, Nth, every Nth, chance N% or "
         "a colon"},
        {"canmgr vor_cfg_set_can_if: never",
         "8: \"vor_cfg_set_can_if\"; expected a call that sends a message; is it vor_cfg_set_can_id?"},
        {"canmgr from 7: never", "13: \"7\"; expected SAP and the client's number, once"},
        {"canmgr 2nd every 3rd: never", "18: \"3rd\"; expected one of Nth, every Nth and chance N%, once"},
        {"any chance 101%: never", "12: \"101%\"; expected a part of 100, such as 1%"},
        {"any \"port 3: never", "5: the text that begins here is not closed"},
        {"canmgr: answer \"-e\"",
         "9: \"answer\"; expected one of status N, id low, id high, id N, no payload, short N, "
         "late TIME, doubled, swapped, never, refuse, die TIME"},
        {"konfd: status 7", "8: \"status\"; expected one of never, answer \"TEXT\", split, hang up"},
        {"konfd from SAP 200: never", "7: \"from\"; expected \"TEXT\", Nth, every Nth, chance N% or a colon"},
        {"canmgr: status seven", "16: \"seven\"; expected a status, such as 7"},
        {"canmgr: id 1x", "12: \"1x\"; expected an id, such as 0x7003 (or low, high)"},
        {"canmgr: late 4", "14: \"4\"; expected a time, such as 20ms, 4s or 2min"},
        {"canmgr: never once", "15: \"once\"; expected a comma and how often, or the rule's end"},
        {"canmgr: never, thrice", "16: \"thrice\"; expected once, twice, N times or for TIME"},
        {"canmgr: never, 3", "17: the rule ends here; expected times"},
        {"canmgr: never, once more", "21: \"more\"; expected the rule's end"},
        {"konfd: answer -e", "15: \"-e\"; expected the text between double quotes"},
    };
    for (const auto& [line, complaint] : table) {
        EXPECT_EQ(complaint, wrong_with(line)) << line;
    }
}

TEST(fault_rules, file_reports_every_error)
{
    const processes::TemporaryDirectory place;
    const std::string file = (place.path() / "faults").string();
    std::ofstream(file) << "# two good ones\n\ncanmgr: status 7\n  konfd: never # and that\n";
    EXPECT_EQ(2U, read_rules(file).size());
    std::ofstream(file, std::ios::app) << "canmgr: stat 7\nnobody: never\n";
    try {
        read_rules(file);
        ADD_FAILURE() << "two of the rules are wrong";
    } catch (const BadFile& error) {
        const std::string text = error.what();
        EXPECT_EQ(0U, text.find(file + ":5:9: \"stat\"; expected one of")) << text;
        EXPECT_NE(std::string::npos, text.find("\n" + file + ":6:1: \"nobody\"; expected a manager")) << text;
    }
    EXPECT_THROW(read_rules(file + ".not"), BadFile);
}

const Subject baudrate{
    .sap = 19, .client = 200, .id = 0x13003, .call = "vor_cfg_set_can_baudrate", .object = "port 1", .answered = true};

// Which of the messages a rule acts on: x, else a dot.
std::string acts(const std::string& rule, const std::vector<Subject>& messages, std::uint64_t seed = 1,
                 std::chrono::milliseconds between = 1s)
{
    RuleList plan(seed);
    Time now{};
    plan.add(parse_rule(rule), now);
    std::string seen;
    for (const Subject& message : messages) {
        seen += plan.due(message, now) ? 'x' : '.';
        now += between;
    }
    return seen;
}

TEST(fault_rules, matching)
{
    const Subject other{.sap = 7,
                        .client = 201,
                        .id = 0x7003,
                        .call = "vor_cfg_set_ip_address",
                        .object = "interface 1",
                        .answered = true};
    const Subject complained{.sap = 19, .client = 200, .id = 0x13003, .answered = true};
    Subject one_way = baudrate;
    one_way.answered = false;
    const Subject konfd{.konfd = true, .object = "-s -l \"mtu 1400\" \"interface eth1\"", .answered = true};
    const Subject fan{.sap = 240, .call = "vor_cfg_towermon_obj_*_physical_id", .answered = true};
    const std::vector<Subject> all{baudrate, other, complained, one_way, konfd, fan};
    const std::pair<const char*, const char*> table[] = {
        {"canmgr: never", "x.x..."},
        {"19: never", "x.x..."},
        {"any: never", "xxx..x"},
        {"any: refuse", "xxxx.x"},
        {"konfd: never", "....x."},
        {"konfd \"eth1\": never", "....x."},
        {"konfd \"eth2\": never", "......"},
        {"any vor_cfg_set_can_baudrate: never", "x....."},
        {"any vor_cfg_set_*: never", "xx...."},
        {"any vor_cfg_towermon_obj_fan_physical_id: never", ".....x"},
        {"any 0x7003: never", ".x...."},
        {"any \"interface 1\": never", ".x...."},
        {"any from SAP 201: never", ".x...."},
    };
    for (const auto& [rule, seen] : table) {
        EXPECT_EQ(seen, acts(rule, all)) << rule;
    }
}

TEST(fault_rules, counts_and_chance)
{
    const std::vector<Subject> ten(10, baudrate);
    const std::pair<const char*, const char*> table[] = {
        {"canmgr: never", "xxxxxxxxxx"},
        {"canmgr: never, once", "x........."},
        {"canmgr: never, twice", "xx........"},
        {"canmgr: never, 3 times", "xxx......."},
        {"canmgr 2nd: never", ".x........"},
        {"canmgr every 3rd: never", "..x..x..x."},
        {"canmgr every 3rd: never, twice", "..x..x...."},
        {"canmgr: never, for 4s", "xxxx......"},
        {"canmgr chance 100%: never, once", "x........."},
    };
    for (const auto& [rule, seen] : table) {
        EXPECT_EQ(seen, acts(rule, ten)) << rule;
    }
    const std::vector<Subject> many(1000, baudrate);
    const std::string drawn = acts("canmgr chance 10%: never", many);
    EXPECT_EQ(drawn, acts("canmgr chance 10%: never", many)) << "the seed's own";
    EXPECT_NE(drawn, acts("canmgr chance 10%: never", many, 2));
    EXPECT_NEAR(100, static_cast<double>(std::ranges::count(drawn, 'x')), 40);
}

TEST(fault_rules, first_match_acts_each_counts)
{
    RuleList plan(1);
    plan.add(parse_rule("any: status 7, twice"), {});
    plan.add(parse_rule("canmgr every 2nd: never"), {});
    std::string seen;
    for (int message = 0; message < 5; ++message) {
        const auto due = plan.due(baudrate, {});
        seen += due ? std::to_string(due->number) : ".";
    }
    EXPECT_EQ("11.2.", seen);
    EXPECT_EQ("1: any: status 7, twice (acted on 2 of 2 messages, over)\n"
              "2: canmgr every 2nd: never (acted on 1 of 5 messages)\n",
              plan.text({}));
    EXPECT_TRUE(plan.clear(1));
    EXPECT_FALSE(plan.clear(1));
    EXPECT_EQ(3U, plan.add(parse_rule("any: never"), {})) << "numbers are not used twice";
}

} // namespace
