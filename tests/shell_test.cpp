// vorcfg's options and verdicts.
#include <gtest/gtest.h>

#include <fstream>

#include "call/verdict.hpp"
#include "input/options.hpp"
#include "output/output.hpp"
#include "processes.hpp"
#include "records.hpp"
#include "rows/families.hpp"
#include "site/sha256.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

using namespace vorcfg;

namespace {

TEST(options, anywhere_before_double_dash)
{
    const char* const words[] = {"gpio", "--json", "set-value", "-1", "--sap=0x1010", "--", "--yes"};
    input::Options options;
    input::take_options(input::words_of({const_cast<char* const*>(words), std::size(words)}), options);
    EXPECT_TRUE(options.json);
    EXPECT_FALSE(options.yes);
    EXPECT_EQ(0x1010, options.sap);
    ASSERT_EQ(4U, options.words.size());
    EXPECT_EQ("--yes", options.words[3].text);
}

TEST(konfd_query, passwords_are_masked)
{
    EXPECT_EQ("-s -l \"password ********\" -r \"^password \" \"ssid password\"",
              call::without_secrets("-s -l \"password a b\" -r \"^password \" \"ssid password\"", {}));
    EXPECT_EQ("-c -r \"^password ********\"", call::without_secrets("-c -r \"^password a$\"", {}));
    EXPECT_EQ("the password is", call::without_secrets("the password is", {}));
}

// --- Verdicts -----------------------------------------------------------------

call::Message by(call::Way way, bool delivered)
{
    call::Message message;
    message.way = way;
    message.sap = 4;
    message.delivered = delivered;
    return message;
}

call::Message request(std::optional<std::int32_t> status)
{
    call::Message message = by(call::Way::request, true);
    message.answer_id = message.id;
    message.answer_status = status;
    return message;
}

call::Message konfd_command(const char* answer)
{
    call::Message message = by(call::Way::konfd, true);
    message.answer = answer;
    return message;
}

// The examples of FIPS 180-4 and RFC 4231.
TEST(sha256, standard_vectors)
{
    const auto digits = [](const std::string& bytes) {
        std::string text = vor::hexadecimal(bytes);
        std::erase(text, ' ');
        return text;
    };
    for (const auto& [text, hash] :
         {std::pair<std::string, const char*>{"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
          {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
          {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
           "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
          {std::string(1'000'000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}}) {
        EXPECT_EQ(digits(site::sha256(text)), hash);
    }
    const struct {
        std::string key;
        std::string text;
        const char* mac;
    } macs[] = {
        {std::string(20, '\x0b'), "Hi There", "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7"},
        {"Jefe", "what do ya want for nothing?", "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
        {std::string(131, '\xaa'), "Test Using Larger Than Block-Size Key - Hash Key First",
         "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54"}};
    for (const auto& each : macs) {
        EXPECT_EQ(digits(site::hmac_sha256(each.key, each.text)), each.mac);
    }
}

TEST(verdict, outcome_and_exit_code)
{
    const rows::Row& setter = *rows::row_named("gpio", "set-direction");
    const rows::Row& unread = *rows::row_named("serial", "set-parity");
    const rows::Row& stub = *rows::row_named("ip", "get-ip-address");
    const rows::Row& stored = *rows::row_named("konfd", "set-interface-ip");
    const call::Message one_way = by(call::Way::one_way, true);
    const call::Message unsent = by(call::Way::one_way, false);
    call::Message unserved = unsent;
    unserved.unserved = true;
    call::Message timed_out = by(call::Way::request, false);
    timed_out.timed_out = true;
    call::Message foreign = request(0);
    foreign.answer_id = 1;
    struct VerdictCase {
        const rows::Row& row;
        std::int32_t code;
        std::int32_t manager_errno;
        std::vector<call::Message> messages;
        const char* name;
        int exit;
        const char* state;
    } const cases[] = {
        {setter, 0, 0, {request(0)}, "accepted", 0, "accepted"},
        {setter, -1, 7, {request(7)}, "refused", 1, "refused"},
        {setter, -1001, 0, {request(0)}, "refused", 1, "refused"},
        {setter, -1, 0, {request(7)}, "unread", 5, "unknown"},
        {setter, -4, 0, {request({})}, "unread", 5, "unknown"},
        {setter, -3, 0, {by(call::Way::request, false)}, "not delivered", 3, "not delivered"},
        {setter, -3, 0, {timed_out}, "unknown", 6, "unknown"},
        {setter, -4, 0, {}, "not sent", 4, "not delivered"},
        {setter, 0, 0, {one_way}, "sent", 0, "sent"},
        {setter, 0, 0, {unserved}, "not delivered", 3, "not delivered"},
        {setter, 0, 0, {unsent}, "not delivered", 3, "not delivered"},
        {setter, -3, 0, {one_way}, "contradiction", 9, "unknown"},
        {setter, 0, 0, {request(0), one_way}, "accepted", 0, "accepted"},
        {setter, 0, 0, {request(0), unserved}, "unknown", 6, "unknown"},
        {setter, -3, 0, {request(0), unsent}, "unknown", 6, "unknown"},
        {unread, -4, 0, {request(0)}, "unread", 5, "unread"},
        {unread, -4, 0, {request({})}, "unread", 5, "unknown"},
        {unread, -4, 0, {foreign}, "unread", 5, "unknown"},
        {unread, -4, 0, {request(7)}, "refused", 1, "refused"},
        {stub, 0, 0, {}, "nothing to do", 0, "accepted"},
        {stored, 0, 0, {konfd_command("-o")}, "accepted", 0, "accepted"},
        {stored, -1, 0, {konfd_command("-e")}, "refused", 1, "refused"},
        {stored, -1, 0, {by(call::Way::konfd, true)}, "unknown", 6, "unknown"},
        {stored, -1, 0, {by(call::Way::konfd, false)}, "not delivered", 3, "not delivered"},
        {stored, -1, 0, {konfd_command("-o")}, "contradiction", 9, "unknown"},
    };
    for (const VerdictCase& each : cases) {
        rows::Returned back;
        back.code = each.code;
        call::Observation seen;
        seen.messages = each.messages;
        const call::Verdict verdict = call::judged(each.row, back, each.manager_errno, seen);
        EXPECT_EQ(each.name, call::name_of(verdict.outcome)) << verdict.text;
        EXPECT_EQ(each.exit, call::exit_of(verdict.outcome)) << verdict.text;
        EXPECT_EQ(each.state, call::name_of(call::state_of(each.row, verdict.outcome, seen))) << verdict.text;
    }
}

TEST(options, timeout_units)
{
    const auto seconds = [](const std::string& text) {
        input::Options options;
        input::take_options(input::words_of("--timeout " + text), options);
        return options.timeout;
    };
    for (const char* const text : {"7200", "7200s", "0x1c20", "120m", "120min", "2h", "7200000ms"}) {
        EXPECT_EQ(7200U, seconds(text)) << text;
    }
    for (const char* const text : {"0", "500ms", "86401", "25h", "2hours", "s", "-1"}) {
        EXPECT_THROW(seconds(text), input::InputError) << text;
    }
}

// --- JSON ------------------------------------------------------------------------

TEST(json, everything_is_described_and_on_standard_output)
{
    const processes::Workplace place;
    processes::Gateway gateway(place, {"--strict"});
    const auto write = [&](const char* name, const char* text) { std::ofstream(place.path() / name) << text; };
    write("good", "can set-id 1 7 1\n");
    write("bad", "can set-id 1 7\n\n  nothing\n");
    write("twice", "can set-id 1 7 1\ncan set-id 1 8 1\n");
    write("open", "can set-id 1 \"7\n");
    write("lines", "gpio set-value 1 1\n--bogus\nnothing\nadc\nsearch zzzz\n--version\nbatch good\n\n");
    place.run("vorsim fault add 'gpiomgr: status 7'");
    const struct {
        const char* command;
        int exit;
        const char* types; // of the lines; that of many rows is written once
    } cases[] = {
        {"vorcfg --json", 2, "error"},
        {"vorcfg --json nothing", 2, "error"},
        {"vorcfg --json adc", 2, "error"},
        {"vorcfg --bogus --json list", 2, "error"},
        {"vorcfg list --json --bogus", 2, "error"},
        {"vorcfg --sap x --timeout 0 --json", 2, "error"},
        {"vorcfg --json list --html", 2, "error"},
        {"vorcfg --json plan", 2, "error"},
        {"vorcfg --json check missing", 8, "error"},
        {"vorcfg --json batch bad", 2, "error error"},
        {"vorcfg --json check open", 2, "error"},
        {"vorcfg --json check good", 0, "check"},
        {"vorcfg --json batch twice", 0, "call call batch"},
        {"vorcfg --json plan twice", 11, "warning plan_line plan_line plan"},
        {"vorcfg --json apply twice", 0, "warning plan_line plan_line call call apply"},
        {"vorcfg --json report twice.journal", 0, "report"},
        {"vorcfg --json can set-id 1 7", 2, "error"},
        {"vorcfg --json gpio set-direction 3 1 0", 1, "call"},
        {"vorcfg --json gpio set-value 1 1", 0, "call"},
        {"vorcfg --json common system-restart 30", 2, "error"},
        {"vorcfg --json --dry-run common system-restart 30", 0, "call"},
        {"vorcfg --json --yes common system-restart 0", 0, "call notice"},
        {"VORINFRA_DIR=elsewhere vorcfg --json gpio set-value 1 1", 7, "call"},
        {"vorcfg --json search ntp", 0, "row"},
        {"vorcfg --json search zzzz", 2, "error"},
        {"vorcfg --json list", 0, "row"},
        {"vorcfg --json list zzzz", 2, "error"},
        {"vorcfg --json help adc", 0, "text"},
        {"vorcfg --json -h", 0, "text"},
        {"vorcfg --json --version", 0, "text"},
        {"vorcfg --json manual vorcfg.1", 0, "text"},
        {"vorcfg --json manual zzzz", 2, "error"},
        {"vorcfg --json completion bash", 0, "text"},
        {"vorcfg --json < lines", 2, "call error error error error text call batch"},
        {"vorcfg < lines --json", 2, "call error error error error text call batch"},
    };
    for (const auto& each : cases) {
        const processes::Output output = place.run(std::string(each.command) + " 2>complaints");
        EXPECT_EQ(each.exit, output.exit_code) << each.command << '\n' << output.text;
        EXPECT_EQ("", processes::contents(place.path() / "complaints")) << each.command;
        std::string types;
        std::string last;
        for (const std::string_view line : vor::lines_in(output.text)) {
            EXPECT_EQ("", processes::mismatch(std::string(line))) << each.command << '\n' << line;
            const std::string type = vor::Json::read(line).value_or(vor::Json()).value("type", "no JSON");
            types += type == "row" && last == "row" ? "" : (types.empty() ? "" : " ") + type;
            last = type;
        }
        EXPECT_EQ(each.types, types) << each.command << '\n' << output.text;
    }
}

// The check itself, which everything that starts vorcfg relies on.
TEST(json, what_is_not_described_is_found)
{
    const std::string check = "{\"schema\":3,\"type\":\"check\",\"file\":\"f\",\"calls\":1,\"exit\":0";
    EXPECT_EQ("", processes::mismatch(check + "}"));
    EXPECT_EQ("", processes::mismatch("{\"confirmed\":true,\"at\":\"2026-05-12T10:04:00Z\",\"by\":\"a\"}"));
    for (const std::string& line :
         {check, check + ",\"more\":1}", check + ",\"line\":0}", check + ",\"calls\":\"1\"}",
          std::string("{\"schema\":3,\"type\":\"check\",\"file\":\"f\",\"calls\":1}"),
          std::string("{\"schema\":2,\"type\":\"check\",\"file\":\"f\",\"calls\":1,\"exit\":0}"),
          std::string("{\"schema\":3,\"type\":\"more\"}"), std::string("{\"more\":true}"),
          std::string("{\"confirmed\":true,\"at\":\"today\",\"by\":\"a\"}")}) {
        EXPECT_NE("", processes::mismatch(line)) << line;
    }
}

TEST(serve, requests_are_described)
{
    for (const input::OptionRow& row : input::option_rows()) {
        std::string member(row.name.substr(2));
        std::ranges::replace(member, '-', '_');
        const std::string request =
            R"({"id":1,"command":"apply",")" + member + (row.value.empty() ? R"(":true})" : R"(":"1"})");
        EXPECT_EQ(row.in_requests, processes::mismatch(request).empty()) << request;
    }
    for (const char* const request :
         {R"({"id":"a","call":"gsm set-password","arguments":{"gsm_port":1,"password":"a"},"dry_run":true})",
          R"({"id":1,"call":"konfd query","arguments":["--set"]})", R"({"id":1,"command":"describe","of":"can"})",
          R"({"id":1,"command":"plan","site":"","file":"f","vars":{"a":1},"secrets":{"b":"c"}})",
          R"({"id":1,"command":"journal","journal":"j","text":""})"}) {
        EXPECT_EQ("", processes::mismatch(request));
    }
}

// Every third is wrong, each in another way.
TEST(serve, as_many_answers_as_requests)
{
    const processes::Workplace place;
    processes::Gateway gateway(place, {"--strict"});
    const std::string wrong[] = {"",
                                 R"(,"call":"can set-id","arguments":{"port_num":"hush"})",
                                 R"(,"call":"gsm set-password","arguments":["hush"])",
                                 R"(,"call":"can set-id","secrets":{"hush":"hush"})",
                                 R"(,"command":"batch")",
                                 R"(,"command":"apply","site":"gsm set-password x hush 1","gateway":"g")",
                                 ",\"" + std::string(1'000'000, 'a') + R"(":1,"command":"plan")"};
    std::string wide = "{\"id\":1";
    for (int i = 0; i < 2000; i++) {
        wide += ",\"" + std::to_string(i) + "\":0";
    }
    const std::string unreadable[] = {"", "{", "hush", "\xff", std::string(100'000, '['), wide + "}", "\"hush\""};
    std::ofstream requests(place.path() / "requests");
    for (std::size_t i = 0; i < 100; i++) {
        const std::string id = std::to_string(i);
        if (i % 6 == 3) {
            requests << unreadable[i / 6 % std::size(unreadable)] << '\n';
        } else {
            const std::string right =
                R"(,"call":"can set-id","arguments":{"port_num":1,"can_id":)" + id + R"(,"option":1})";
            requests << "{\"id\":" << id << (i % 3 == 0 ? wrong[i / 6 % std::size(wrong)] : right) << "}\n";
        }
    }
    requests.close();
    const processes::Output output = place.run("vorcfg serve <requests");
    const std::vector<std::string_view> lines = vor::lines_in(output.text);
    ASSERT_EQ(101U, lines.size()) << output.text;
    for (std::size_t i = 0; i < 100; i++) {
        const vor::Json answer = vor::Json::parse(lines[i + 1]);
        EXPECT_EQ(i % 3 == 0 ? 2 : 0, answer.value("exit", -1)) << vor::dump(answer);
        EXPECT_EQ(i % 6 == 3 ? vor::Json() : vor::Json(i), answer["id"]) << vor::dump(answer);
    }
    EXPECT_EQ(std::string::npos, output.text.find("hush"));
    EXPECT_EQ(0, output.exit_code);
    EXPECT_TRUE(place.run("vorsim show").text.starts_with("vorsim: 66 messages\n"));
}

} // namespace
