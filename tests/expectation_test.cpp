// What vorsim prints is what it can be told to expect; and how what arrived is compared with it.
#include <sstream>

#include <gtest/gtest.h>

#include "gateway/decode.hpp"
#include "gateway/match.hpp"
#include "record/comparison.hpp"
#include "record/line.hpp"
#include "tables/managers.hpp"

namespace {

using vorsim::record::Expectation;
using vorsim::record::parse_expectation;
using vorsim::tables::Field;
using vorsim::tables::Kind;
using vorsim::values::Record;

// An accepted message of the row, with this text and number wherever they can be.
Record record_of(const vorsim::tables::ListedRow& listed, const std::string& text, std::int32_t number)
{
    const vorsim::tables::MessageRow& row = *listed.row;
    vorsim::gateway::Match match{.row = &row};
    if (!row.layout.lead.empty()) {
        match.lead = 1;
    }
    for (const Field& field : row.layout.fields()) {
        const std::int32_t narrow = field.kind == Kind::byte ? number & 0xff : static_cast<std::int16_t>(number);
        match.parts.push_back({&field,
                               {reinterpret_cast<const std::uint8_t*>(text.c_str()), text.size() + 1},
                               field.only_value.value_or(field.kind == Kind::int32 ? number : narrow)});
    }
    const auto sap = static_cast<std::uint16_t>(listed.manager == vorsim::tables::any_manager ? 77 : listed.manager);
    auto decoded = vorsim::gateway::decode(sap, match, false);
    Record record{.accepted = true, .sap = sap, .id = row.exchange.id, .call = std::string(row.call)};
    record.object = decoded.object;
    record.values = decoded.values;
    record.status = row.exchange.answered ? std::optional(0) : std::nullopt;
    record.line = vorsim::record::line_of(record);
    return record;
}

bool is_expected(const std::string& line, const Record& record)
{
    try {
        return parse_expectation(line)->matches(record);
    } catch (const vor::WordError& error) {
        ADD_FAILURE() << error.what() << " at " << error.column << "\n" << line;
        return false;
    }
}

TEST(expectation, every_line_can_be_pasted)
{
    const std::string long_text(200, 'x');
    for (const auto& listed : vorsim::tables::all_rows()) {
        for (const std::string& text : {std::string("door"), std::string("a: b=\"c\"  x3 [d] #\\"), long_text}) {
            for (const std::int32_t number : {0, -1}) {
                Record record = record_of(listed, text, number);
                EXPECT_TRUE(is_expected(record.line, record)) << record.line;
                EXPECT_TRUE(is_expected(vorsim::record::expectation_of(record), record)) << record.line;
                const std::string pasted = "7  2026-11-22T16:09:16.080322Z  12 us  " + record.line +
                                           "  [fault 1: answer \"a  b\"]  [client gone]  at least 3";
                EXPECT_TRUE(is_expected(pasted, record)) << pasted;
                EXPECT_EQ(3U, parse_expectation(pasted)->count.least);
                record.line.replace(0, 9, "NO ANSWER");
                EXPECT_FALSE(is_expected(pasted, record)) << "the verdict is another";
            }
        }
    }
}

TEST(expectation, secrets_are_masked_or_shown)
{
    const std::string masked = "gsmmgr  vor_cfg_gsm_set_password  port 1: password=******** option=1";
    const std::string clear = "gsmmgr  vor_cfg_gsm_set_password  port 1: password=\"sim-17\" option=1";
    Record record{.sap = 12, .id = 0xc00a, .call = "vor_cfg_gsm_set_password", .object = "port 1"};
    for (const std::string text : {"********", "sim-17"}) {
        record.values = {{"gsm_port", "", std::int64_t{1}}, {"password", "", text}, {"option", "", std::int64_t{1}}};
        EXPECT_TRUE(is_expected(masked, record));
        EXPECT_EQ(text == "sim-17", is_expected(clear, record));
    }
    record = {.kind = Record::Kind::konfd,
              .commands = "-s -l \"interface wlan0\" | -s -l \"password ********\" \"wlan0\""};
    EXPECT_TRUE(is_expected("konfd  client 3  " + record.commands, record));
    EXPECT_TRUE(is_expected("konfd  -s  -l \"interface wlan0\" | -s -l \"password ********\" \"wlan0\"", record));
    EXPECT_FALSE(is_expected("konfd  -s -l \"interface wlan1\" | -s -l \"password ********\" \"wlan0\"", record));
}

// Messages to canmgr about the ids of its ports: "11 12" are port 1's ids 1 and 2.
std::vector<Record> arrived(const std::string& words)
{
    std::vector<Record> records;
    std::istringstream list(words);
    for (std::string word; list >> word;) {
        Record record{.seq = records.size() + 1, .sap = 19, .id = 0x13003, .call = "vor_cfg_set_can_id"};
        record.object = std::string("port ") + word[0];
        record.values = {{"port_num", "", std::int64_t{word[0] - '0'}},
                         {"can_id", "", std::int64_t{word[1] - '0'}},
                         {"option", "", std::int64_t{1}}};
        record.status = 0;
        record.complained = word.ends_with('!');
        record.complaint = record.complained ? "wrong" : "";
        record.line = vorsim::record::line_of(record) + word;
        records.push_back(record);
    }
    return records;
}

TEST(comparison, counts_wildcards_and_orders)
{
    const vorsim::record::Manner in_order{};
    const vorsim::record::Manner any_order{.any_order = true};
    const vorsim::record::Manner subset{.subset = true};
    const vorsim::record::Manner any_subset{.any_order = true, .subset = true};
    const vorsim::record::Manner lenient{.allow_complaints = true};
    const std::string one = "canmgr  vor_cfg_set_can_id  port 1: can_id=0x1 option=1";
    const std::string two = "canmgr  vor_cfg_set_can_id  port 1: option=1 can_id=2";
    const std::string port = "canmgr vor_cfg_set_can_id port 1: can_id=* option=*";
    const std::string call = "canmgr  vor_cfg_set_can_*  *";
    const struct {
        int line;
        std::string expected;
        const char* arrived;
        vorsim::record::Manner manner;
        std::size_t missing;
        std::size_t unexpected;
    } table[] = {
        {__LINE__, one + "\n" + two, "11 12", in_order, 0, 0},
        {__LINE__, one + "\n" + two, "12 11", in_order, 1, 1},
        {__LINE__, one + "\n" + two, "12 11", any_order, 0, 0},
        {__LINE__, one + "\n" + two, "11", in_order, 1, 0},
        {__LINE__, one + "\n# nothing\n\n" + two, "11 21 12", in_order, 0, 1},
        {__LINE__, one + "\n" + two, "11 21 12", subset, 0, 0},
        {__LINE__, one + "\n" + two, "12 21 11", subset, 1, 0},
        {__LINE__, one + "  x3", "11 11 11", in_order, 0, 0},
        {__LINE__, one + " x3", "11 11", in_order, 1, 0},
        {__LINE__, one + "  x2", "11 11 11", in_order, 0, 1},
        {__LINE__, one + "  at least 2\n" + two, "11 11 11 11 12", in_order, 0, 0},
        {__LINE__, one + "  at least 2\n" + two, "11 12", in_order, 1, 0},
        {__LINE__, port + "  at least 1\n" + two, "11 12 12", in_order, 0, 0}, // the last is not taken twice
        {__LINE__, call + " never\n" + port, "11", in_order, 1, 1},
        {__LINE__, one + " never", "12 21", subset, 0, 0},
        {__LINE__, one + "  never\n" + port, "12 11", subset, 0, 1},
        // A message must be left to the expectation that nothing else fits.
        {__LINE__, port + "\n" + one, "11 12", any_order, 0, 0},
        {__LINE__, port + "  at least 1\n" + one + "\n" + call, "21 11 12", any_order, 0, 0},
        {__LINE__, call + "\n" + port + "\n" + one, "11 12 22", any_order, 0, 0},
        {__LINE__, call + "\n" + port + "\n" + one, "12 12 22", any_order, 1, 1},
        {__LINE__, port + "\n" + one, "22 11 12 31", any_subset, 0, 0},
        {__LINE__, one, "11 12!", in_order, 0, 1},
        {__LINE__, one, "11 12!", subset, 0, 1},
        {__LINE__, one, "11 12!", lenient, 0, 0},
        {__LINE__, one, "11!", lenient, 1, 0}, // nor is it the message that is expected
    };
    for (const auto& row : table) {
        const auto expected = vorsim::record::read_expectations(row.expected, "file");
        const auto found = vorsim::record::compare(expected, arrived(row.arrived), row.manner);
        EXPECT_EQ(row.missing, found.missing) << "line " << row.line;
        EXPECT_EQ(row.unexpected, found.unexpected) << "line " << row.line;
    }
}

TEST(comparison, texts_are_compared_beyond_the_cut_of_a_line)
{
    std::vector<Record> records;
    std::string all;
    for (const char end : {'A', 'B'}) {
        const std::string text = std::string(100, 'x') + end;
        Record record{.sap = 19, .id = 0x13003, .call = "vor_cfg_set_can_baudrate", .object = "port 1"};
        record.values = {{"can_port", "", std::int64_t{1}}, {"baudrate", "", text}, {"set", "", std::int64_t{1}}};
        record.line = "alike";
        records.push_back(record);
        all += "canmgr  vor_cfg_set_can_baudrate  port 1: baudrate=\"" + text + "\" set=1\n";
    }
    const auto expected = vorsim::record::read_expectations(all, "file");
    EXPECT_TRUE(vorsim::record::compare(expected, records, {}).holds());
    std::swap(records[0], records[1]);
    EXPECT_FALSE(vorsim::record::compare(expected, records, {}).holds());
    EXPECT_TRUE(vorsim::record::compare(expected, records, {.any_order = true}).holds());
}

// Whatever it is asked to compare, it is done soon and says so.
TEST(comparison, work_is_bounded)
{
    std::string all;
    std::vector<Record> records = arrived("11");
    records.resize(5'000, records[0]);
    for (std::size_t at = 0; at < records.size(); ++at) {
        records[at].values[1].data = static_cast<std::int64_t>(at);
        records[at].line += std::to_string(at);
        all += "canmgr  vor_cfg_set_can_id  port 1: option=1 can_id=" + std::to_string(4'999 - at) + "\n";
    }
    const auto expected = vorsim::record::read_expectations(all, "file");
    for (const bool any_order : {false, true}) {
        const auto found = vorsim::record::compare(expected, records, {.any_order = any_order});
        EXPECT_TRUE(found.cut && !found.holds());
    }
    std::string alike;
    for (int line = 0; line < 2'000; ++line) {
        alike += "canmgr  vor_cfg_set_can_id  port 1: *\n";
    }
    const auto any = vorsim::record::read_expectations(alike, "file");
    EXPECT_EQ(3'000U, vorsim::record::compare(any, records, {.any_order = true}).unexpected);
    EXPECT_TRUE(vorsim::record::compare(std::span(expected).last(1), std::span(records).first(1), {}).holds());
}

} // namespace
