// Fault rules: what they accept and when they act.
#include <algorithm>

#include <gtest/gtest.h>

#include "faults/parse.hpp"
#include "faults/rule_list.hpp"

namespace {

using namespace vorsim::faults;
using namespace std::chrono_literals;

// The column and the text of what is wrong; empty when nothing is.
std::string wrong_with(const std::string& line)
{
    try {
        parse_rule(line);
        return "";
    } catch (const RuleError& error) {
        return std::to_string(error.column) + ": " + error.what();
    }
}

TEST(fault_rules, accepted_forms)
{
    for (const char* const line : {"any chance 0.25%: never", "SAP 77 0x4d001 111th: id 0x7003", "any 22nd: never",
                                   "240: short 2 bytes, 5 times", "any from SAP 4096 \"port 3\": die 2m",
                                   "konfd: hang up, for 10s", "canmgr:status -1,once # why not"}) {
        EXPECT_EQ("", wrong_with(line)) << line;
    }
    EXPECT_EQ("8: unexpected \"12nd\"; expected 12th", wrong_with("canmgr 12nd: never"));
    EXPECT_EQ("canmgr: id high, once", parse_rule("  canmgr: id high, once   # a comment").text);
    EXPECT_EQ("answer \"-e\"", parse_rule("konfd: answer \"-e\", once").action_text);
}

const Subject baudrate{
    .sap = 19, .client = 200, .id = 0x13003, .call = "vor_cfg_set_can_baudrate", .object = "port 1", .answered = true};

// Which of the messages a rule acts on: x, else a dot.
std::string acts(const std::string& rule, const std::vector<Subject>& messages, std::uint64_t seed = 1,
                 std::chrono::milliseconds between = 1s)
{
    RuleList rules(seed);
    Time now{};
    rules.add(parse_rule(rule), now);
    std::string seen;
    for (const Subject& message : messages) {
        seen += rules.due(message, now) ? 'x' : '.';
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
    RuleList rules(1);
    rules.add(parse_rule("any: status 7, twice"), {});
    rules.add(parse_rule("canmgr every 2nd: never"), {});
    std::string seen;
    for (int message = 0; message < 5; ++message) {
        const auto due = rules.due(baudrate, {});
        seen += due ? std::to_string(due->number) : ".";
    }
    EXPECT_EQ("11.2.", seen);
    EXPECT_EQ("1: any: status 7, twice (acted on 2 of 2 messages, ended)\n"
              "2: canmgr every 2nd: never (acted on 1 of 5 messages)\n",
              rules.text({}));
    EXPECT_TRUE(rules.clear(1));
    EXPECT_FALSE(rules.clear(1));
    EXPECT_EQ(3U, rules.add(parse_rule("any: never"), {})) << "numbers are not used twice";
}

} // namespace
