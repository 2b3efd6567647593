// What the managers make of a message: values, objects, complaints, answers.
#include <algorithm>
#include <cstring>
#include <deque>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include <vorinfra_manager.h>

#include "gateway/gateway.hpp"
#include "record/expectation.hpp"
#include "record/json.hpp"
#include "record/line.hpp"
#include "record/stored.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace {

using vorsim::gateway::Decision;
using vorsim::gateway::Gateway;

// A payload in words: "1 i16 3 | 5 str door | 32 raw x", or "hex 0300".
std::vector<std::uint8_t> payload_of(const std::string& words)
{
    std::vector<std::uint8_t> bytes(VORINFRA_DATA_MAX);
    vor_int32 size = 0;
    if (words.starts_with("hex ")) {
        for (std::size_t at = 4; at + 1 < words.size(); at += 2) {
            bytes[static_cast<std::size_t>(size++)] =
                static_cast<std::uint8_t>(std::stoi(words.substr(at, 2), nullptr, 16));
        }
    } else {
        TLV_CHAIN chain;
        std::deque<std::string> texts; // each lives until the chain is written
        std::istringstream list(words);
        vor_tlv_chain_init(&chain);
        for (std::string part; std::getline(list, part, '|');) {
            std::istringstream element(part);
            vor_uint16 tag = 0;
            std::string kind;
            element >> tag >> kind >> texts.emplace_back();
            std::string& value = texts.back();
            if (kind == "str") {
                vor_tlv_chain_add_str(&chain, tag, value.data());
            } else if (kind == "raw") {
                vor_tlv_chain_add_raw(&chain, tag, static_cast<vor_uint16>(value.size()),
                                      reinterpret_cast<unsigned char*>(value.data()));
            } else if (kind == "i16") {
                vor_tlv_chain_add_vor_int16(&chain, tag, static_cast<vor_int16>(std::stol(value)));
            } else {
                vor_tlv_chain_add_vor_int32(&chain, tag, static_cast<vor_int32>(std::stoll(value)));
            }
        }
        vor_tlv_chain_serialize(&chain, bytes.data(), &size);
        vor_tlv_chain_free(&chain, 0);
    }
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

constexpr int none = -1;

Decision send(Gateway& gateway, std::uint16_t sap, std::uint32_t id, const std::string& words, bool waits = true,
              int option = none)
{
    const std::vector<std::uint8_t> payload = payload_of(words);
    const auto lead = static_cast<std::uint8_t>(option);
    const Decision decision = gateway.judge({.sap = sap,
                                             .source = 4000,
                                             .id = id,
                                             .answer_wanted = waits,
                                             .meta_data = {&lead, option == none ? 0U : 1U},
                                             .payload = payload});
    gateway.store(decision);
    return decision;
}

std::int32_t status_of(const Decision& decision)
{
    std::int32_t status = -1;
    std::memcpy(&status, decision.answer.data(), std::min(sizeof status, decision.answer.size()));
    return status;
}

struct Sent {
    std::uint16_t sap;
    std::uint32_t id;
    const char* words;
    bool waits;
    int option;
    const char* line;
};

constexpr bool request = true;
constexpr bool one_way = false;

TEST(messages, mismatches_are_reported)
{
    const Sent table[] = {
        {4, 0x4005, "1 i16 3", request, none, "REFUSED 2  gpiomgr  0x4005  unknown message id"},
        {21, 0x15003, "6 str g | 23 i16 3", request, none,
         "REFUSED 2  snmpmgr  0x15003  unknown message id; it belongs to towermon"},
        {4, 0x4004, "1 i16 3 | 9 i16 1 | 6 i16 0", request, none,
         "REFUSED 3  gpiomgr  0x4004  element 2 is tag 9 int16, expected tag 2 int16 (direction), tag 3 int16 (mode)"},
        {4, 0x4004, "1 i16 3 | 2 i32 1 | 6 i16 0", request, none,
         "REFUSED 3  gpiomgr  0x4004  element 2 (direction, tag 2) is int32, expected int16"},
        {4, 0x4004, "1 i16 3 | 6 i16 0 | 2 i16 1", request, none,
         "REFUSED 3  gpiomgr  0x4004  element 2 is tag 6 int16, expected tag 2 int16 (direction), tag 3 int16 (mode)"},
        {4, 0x4004, "1 i16 3 | 2 i16 1", request, none,
         "REFUSED 3  gpiomgr  0x4004  ends after element 2, expected tag 6 int16 (option)"},
        {4, 0x4004, "1 i16 3 | 2 i16 1 | 6 i16 0 | 6 i16 0", request, none,
         "REFUSED 3  gpiomgr  0x4004  unexpected element 4 (tag 6 int16)"},
        {4, 0x4004, "hex 00", request, none, "REFUSED 3  gpiomgr  0x4004  payload is not a chain after element 0"},
        {15, 0xf005, "10 str s | 6 i16 2 | 7 str a | 8 i16 1 | 32 raw xy", request, 0,
         "REFUSED 3  mqttmgr  0xf005  element 5 (server_type, tag 32) is 2 raw bytes, expected one raw byte"},
        {15, 0xf005, "2 str t", request, none, "REFUSED 3  mqttmgr  0xf005  meta-data has 0 bytes, expected 1"},
        {10, 0xa008, "", request, none, "REFUSED 3  datamgr  0xa008  payload is empty, expected the byte set first"},
        {7, 0x7012, "hex 0a0000000a000001", one_way, none,
         "REFUSED    ethmgr  0x7012  payload has 8 bytes, expected 4"},
        {7, 0x7003, "hex 01010000c0a8010affffff00", request, none,
         "REFUSED 3  ethmgr  0x7003  interface_number is 1, expected 0"},
        {7, 0x7005, "hex 00010000c0a8010affffff00", request, none,
         "REFUSED 3  ethmgr  0x7005  interface_number is 0, expected 1 or 2"},
        {7, 0x700b, "9 str lan | 11 i16 2 | 12 i32 1", request, 1,
         "REFUSED 3  ethmgr  0x700b  dns_server_num is 2, but dns_server has 1 element"},
        {21, 0x15001, "34 str hush | 4 i16 1", request, none,
         "REFUSED 3  snmpmgr  0x15001  element 2 (option, tag 4) is 1, expected 2"},
        {21, 0x15001, "39 i16 1", request, none,
         "REFUSED 4  snmpmgr  0x15001  vor_cfg_set_snmp_server_enable is one-way, but an answer is awaited"},
        {12, 0xc002, "1 i16 1", one_way, none,
         "REFUSED    gsmmgr  0xc002  vor_cfg_gsm_activate is a request, but was sent one-way"},
    };
    Gateway gateway({});
    for (const Sent& sent : table) {
        Decision decision = send(gateway, sent.sap, sent.id, sent.words, sent.waits, sent.option);
        const std::string& line = decision.record.line = vorsim::record::line_of(decision.record);
        EXPECT_TRUE(line.starts_with(sent.line)) << line << "\nexpected " << sent.line;
        EXPECT_TRUE(vorsim::record::parse_expectation(line)->matches(decision.record)) << line;
        EXPECT_NE(0, status_of(decision)) << sent.line;
        EXPECT_TRUE(decision.record.complained) << sent.line;
    }
    EXPECT_EQ("", gateway.state().text()) << "a refused message is not stored";
}

TEST(measurements, change_and_repeat_by_seed)
{
    const auto polls = [](const Decision& decision) {
        const auto& values = decision.record.answer_values;
        const auto found = std::ranges::find(values, "polling_count", &vorsim::values::Value::name);
        return static_cast<int>(*found->held<std::uint64_t>());
    };
    Gateway gateway({.seed = 5});
    Gateway twin({.seed = 5});
    Gateway other({.seed = 6});

    const Decision before = send(gateway, 4, 0x4007, "hex 0300");
    send(gateway, 4, 0x4004, "1 i16 3 | 3 i16 2 | 4 i32 500 | 6 i16 1");
    send(twin, 2, 0x2021, ""); // does not disturb the port's own readings
    const Decision after = send(gateway, 4, 0x4007, "hex 0300");
    ASSERT_EQ(24U, after.answer.size());
    EXPECT_EQ(3, after.answer[0]);
    EXPECT_EQ(0, before.answer[2]);
    EXPECT_EQ(2, after.answer[2]) << "the mode it was told";
    EXPECT_EQ(polls(after), after.answer[8] + 256 * after.answer[9]);
    EXPECT_GT(polls(after), polls(before));
    EXPECT_EQ(polls(before), polls(send(twin, 4, 0x4007, "hex 0300")));
    EXPECT_EQ(polls(after), polls(send(twin, 4, 0x4007, "hex 0300")));
    std::set<int> differences;
    for (int call = 0; call < 4; ++call) {
        differences.insert(polls(send(other, 4, 0x4007, "hex 0300")) - polls(send(twin, 4, 0x4007, "hex 0300")));
    }
    EXPECT_GT(differences.size(), 1U);

    EXPECT_NE(send(gateway, 2, 0x2021, "").answer, send(gateway, 2, 0x2021, "").answer);
    EXPECT_NE(send(gateway, 8, 0x8009, "").answer, send(gateway, 8, 0x8009, "").answer);
}

TEST(state, latest_values_per_object)
{
    Gateway gateway({});
    send(gateway, 4, 0x4004, "1 i16 10 | 5 str mains | 6 i16 1");
    send(gateway, 4, 0x4004, "1 i16 2 | 5 str dor | 6 i16 1");
    send(gateway, 4, 0x4004, "1 i16 2 | 5 str door | 6 i16 1");
    send(gateway, 7, 0x7011, "hex 010000000a000000", one_way);
    send(gateway, 7, 0x7013, "hex 000000000a000000", one_way);
    send(gateway, 4, 0x4007, "hex 0700"); // a query sets nothing
    EXPECT_EQ("gpiomgr\n"
              "  port 2\n"
              "    vor_cfg_set_gpio_channel_name  name=\"door\" set=1\n"
              "  port 10\n"
              "    vor_cfg_set_gpio_channel_name  name=\"mains\" set=1\n"
              "ethmgr\n"
              "  route 10.0.0.0\n"
              "    vor_cfg_remove_ip_route\n",
              gateway.state().text());
    const vor::Json gpio = vorsim::record::json_of(gateway.state())["gpiomgr"];
    EXPECT_EQ(4, gpio["sap"]);
    EXPECT_EQ("door", gpio["objects"]["port 2"]["vor_cfg_set_gpio_channel_name"]["name"]);
    EXPECT_FALSE(gpio["objects"].contains("port 7"));
}

TEST(secrets, masked_unless_requested)
{
    const Sent table[] = {
        {7, 0x7006, "1 i16 0 | 2 str net | 3 i16 2 | 4 str hunter2", request, 1, ""},
        {7, 0x7014, "1 i16 0 | 2 str net | 3 i16 2 | 4 str hunter2 | 20 i16 1", request, 1, ""},
        {0, 2, "1 i16 0 | 2 str net | 3 i16 2 | 4 str hunter2 | 20 i16 1", one_way, 1, ""},
        {15, 0xf005, "10 str s | 6 i16 1 | 12 str user | 13 str hunter2", request, 1, ""},
        {12, 0xc00a, "1 i16 1 | 3 str hunter2 | 8 i16 1", request, none, ""},
        {21, 0x15001, "36 str hunter2 | 4 i16 1", request, none, ""},
    };
    for (const bool shown : {false, true}) {
        Gateway gateway({.show_secrets = shown});
        for (const Sent& sent : table) {
            const Decision decision = send(gateway, sent.sap, sent.id, sent.words, sent.waits, sent.option);
            EXPECT_FALSE(decision.record.complained) << vorsim::record::line_of(decision.record);
            const std::string everything = vorsim::record::line_of(decision.record) +
                                           vorsim::record::json_line(decision.record) + gateway.state().text() +
                                           vor::dump(vorsim::record::json_of(gateway.state()));
            EXPECT_EQ(shown, everything.find("hunter2") != std::string::npos) << everything;
            EXPECT_EQ(!shown, everything.find("********") != std::string::npos) << everything;
        }
    }
}

bool harmless(const std::string& text)
{
    const auto is_control = [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; };
    for (std::size_t at = text.find('\xc2'); at != text.npos; at = text.find('\xc2', at + 1)) {
        if (static_cast<unsigned char>(text[at + 1]) < 0xa0) {
            return false; // a control character of the second set
        }
    }
    return std::ranges::none_of(text, is_control) && vor::Json::read('"' + text + '"').has_value();
}

TEST(texts, escaped_for_terminal_and_json)
{
    for (const std::string hidden :
         {"\u00ad", "\u061c", "\u200b", "\u202a", "\u202e", "\u2066", "\u2069", "\U000e0041"}) {
        EXPECT_EQ(vor::escaped(hidden).find(hidden), std::string::npos);
        EXPECT_EQ(vor::dump(vor::Json(hidden)).find(hidden), std::string::npos);
        EXPECT_EQ(hidden, vor::Json::parse(vor::dump(vor::Json(hidden))).string());
    }
    EXPECT_EQ("21 °C \u0939\u094d\u200d", vor::escaped("21 °C \u0939\u094d\u200d"));
    for (int first = 0; first < 256; ++first) {
        for (const int second : {0x00, 0x22, 0x7f, 0x80, 0x8f, 0x90, 0x9b, 0xa0, 0xbf, 0xc0, 0xff}) {
            for (const char third : {'a', '\x80', '\xbf'}) {
                const std::string bytes{static_cast<char>(first), static_cast<char>(second), third};
                std::string line = vor::escaped(bytes);
                const std::string json = vor::dump(vor::Json(bytes));
                EXPECT_TRUE(harmless(json.substr(1, json.size() - 2))) << json;
                std::ranges::replace(line, '\\', '/'); // \x1b is not an escape in JSON
                std::erase(line, '"');
                EXPECT_TRUE(harmless(line)) << line;
            }
        }
    }
}

TEST(texts, wide_deep_and_large_json_is_refused)
{
    const auto repeated = [](const std::string& text, int times) {
        std::string all;
        for (int i = 0; i < times; ++i) {
            all += text;
        }
        return all;
    };
    const auto parse = [](const std::string& text) { return vor::Json::parse(text).size(); };
    EXPECT_EQ(1000U, parse("[" + repeated("{},", 999) + "{}]"));
    EXPECT_THROW(parse("{" + repeated("\"a\":1,", 1000) + "\"b\":1}"), vor::JsonLimit);
    EXPECT_THROW(parse(repeated("[", 100'000)), vor::JsonLimit);
    EXPECT_THROW(parse(repeated("{\"a\":", 100'000)), vor::JsonLimit);
    EXPECT_THROW(parse("[" + repeated("1,", 1 << 20) + "1]"), vor::JsonLimit);
    EXPECT_THROW(parse('"' + std::string(std::size_t{17} << 20, 'a') + '"'), vor::JsonLimit);
}

TEST(log_file, fields_depend_on_option)
{
    const auto record = [](std::uint8_t option, std::size_t at, const std::string& text) {
        std::vector<std::uint8_t> bytes(260, 'x'); // what the sender's buffer happened to hold
        const std::int32_t set_option = option;
        std::memcpy(bytes.data(), &set_option, sizeof set_option);
        std::memcpy(bytes.data() + 4, "boot", 5);
        std::memcpy(bytes.data() + at, text.c_str(), text.size() + 1);
        return bytes;
    };
    Gateway gateway({});
    const auto judge = [&gateway](const std::vector<std::uint8_t>& payload) {
        return vorsim::record::line_of(gateway.judge({.sap = 2, .id = 0x2028, .payload = payload}).record);
    };
    EXPECT_EQ("one-way    platmgr  vor_cfg_set_log_file  log boot file: set_option=2 log_file_name=\"a.log\"",
              judge(record(2, 204, "a.log")));
    EXPECT_EQ("REFUSED    platmgr  0x2028  log_file_name is not terminated within its 50 bytes",
              judge(record(2, 204, std::string(50, 'n'))));
    EXPECT_EQ("REFUSED    platmgr  0x2028  set_option is 4, expected 1, 2 or 3", judge(record(4, 204, "a.log")));
}

} // namespace
