// vorcfg's parsing, batches, verdicts and exit codes.
#include <csignal>
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

#include "batch.hpp"
#include "commands.hpp"
#include "complaint.hpp"
#include "json.hpp"
#include "options.hpp"
#include "outcome.hpp"
#include "processes.hpp"
#include "report.hpp"
#include "session.hpp"

using namespace vorcfg;

namespace {

std::string complaint(std::string_view line)
{
    try {
        plan_batch(line, "f", SecretSources{true, true, {}});
    } catch (const Complaint& caught) {
        return caught.what();
    }
    return "";
}

// The messages that a line of a batch makes, one a line.
std::string messages(std::string_view line)
{
    std::vector<Planned> calls = plan_batch(line, "f", SecretSources{true, true, {}});
    std::string text;
    for (Planned& planned : calls) {
        const Report report = Session({true, false}, std::nullopt).run(planned);
        for (const Message& message : report.seen.messages) {
            text += described(message, planned.values) + '\n';
        }
    }
    return text;
}

TEST(Parse, NumbersFitTheirArgument)
{
    struct Case {
        const char* line;
        const char* complaint;
    } static const cases[] = {
        {"ip set-dhcp 255 255", ""},
        {"ip set-dhcp 0 -128", ""},
        {"ip set-dhcp 256 0", "f:1:13: interface_number: 256 is out of range, 0 to 255 is accepted"},
        {"ip set-dhcp -1 0", "f:1:13: interface_number: -1 is out of range, 0 to 255 is accepted"},
        {"ip set-dhcp 0 256", "f:1:15: config_option: 256 is out of range, -128 to 255 is accepted"},
        {"gpio set-value -32768 0x7fff", ""},
        {"gpio set-value -32769 0", "f:1:16: port_num: -32769 is out of range, -32768 to 32767 is accepted"},
        {"gpio set-value 0 0x8000", "f:1:18: value: 0x8000 is out of range, -32768 to 32767 is accepted"},
        {"can set-peer-id 1 0xFFFFFFFF 1", ""},
        {"can set-peer-id 1 4294967296 1", "f:1:19: peer_id: 4294967296 is out of range, 0 to 4294967295 is accepted"},
        {"can set-peer-id 1 99999999999999999999 1",
         "f:1:19: peer_id: 99999999999999999999 is out of range, 0 to 4294967295 is accepted"},
        {"serial set-speed 1 -2147483648", ""},
        {"serial set-speed 1 2147483648",
         "f:1:20: speed: 2147483648 is out of range, -2147483648 to 2147483647 is accepted"},
        {"gpio set-value 1x 0",
         "f:1:16: port_num: \"1x\" is no number; a number from -32768 to 32767 is wanted, decimal or 0x"},
        {"gpio set-value 0x 0",
         "f:1:16: port_num: \"0x\" is no number; a number from -32768 to 32767 is wanted, decimal or 0x"},
        {"ip show-route-status 0xff", ""},
        {"ip show-route-status 256", "f:1:22: iface_num: 256 is out of range, 0 to 255 is accepted"},
        {"ip set-static-route 10.0.0.0 eth1",
         "f:1:30: interface_number: \"eth1\" is no number; a number from 0 to 65535 is wanted, decimal or 0x"},
        {"ip set-static-route 10.0.0 1", "f:1:21: ip_address: \"10.0.0\" is no IPv4 address such as 192.168.1.10"},
        {"ip set-dhcp-server-dns lan 1 9.9.9.9 9.9.9.256",
         "f:1:38: dns_server: \"9.9.9.256\" is no IPv4 address such as 192.168.1.10"},
        {"gpio set-value \"\" 0",
         "f:1:16: port_num: \"\" is no number; a number from -32768 to 32767 is wanted, decimal or 0x"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(each.complaint, complaint(each.line)) << each.line;
    }
}

TEST(Parse, EveryFaultOfABatchIsNamedByItsPlace)
{
    EXPECT_EQ("f:2:6: gpio has no call \"set-valeu\"; is it set-value?\n"
              "f:3:3: no family \"gpoi\"; is it gpio?\n"
              "f:4:1: the call's name is missing\n"
              "f:5:17: value is missing; wanted: port_num value\n"
              "f:6:20: one argument too many: \"3\"; wanted: port_num value\n"
              "f:7:28: the text that begins here is not closed\n"
              "f:8:29: a backslash stands before a double quote or a backslash only\n"
              "f:9:29: a double quote within a word\n"
              "f:10:31: a blank is missing behind the text\n"
              "f:11:7: cannot be called on its own; what uses it: konfd query\n"
              "f:12:28: ssid: a double quote would break the command's quoting; konfd has no way to escape it",
              complaint("gpio set-value 1 1\n"
                        "gpio set-valeu 1 1\n"
                        "\t gpoi set-value 1 1\n"
                        "gpio\n"
                        "gpio set-value 1\n"
                        "gpio set-value 1 2 3\n"
                        "hostname set-plat-hostname \"a\n"
                        "hostname set-plat-hostname \"\\n\"\n"
                        "hostname set-plat-hostname a\"b\n"
                        "hostname set-plat-hostname \"a\"b\n"
                        "konfd proto-init\n"
                        "wifi set-ssid-password     \"a\\\"b\" x\n"));
}

TEST(Parse, TextsArriveAsWritten)
{
    EXPECT_EQ("datamgr (SAP 10) 0xa00a one-way | 3 str \"a b \\\\ \\\"c\\\" # d\"\n",
              messages("  hostname set-plat-hostname \"a b \\\\ \\\"c\\\" # d\" # e\r\n# f\n\n"));
    EXPECT_EQ("datamgr (SAP 10) 0xa00a one-way | 3 str \"\"\n", messages("hostname set-plat-hostname \"\""));
    EXPECT_EQ("datamgr (SAP 10) 0xa00a one-way | 3 str \"\\x1b[31mtür\"\n",
              messages("\xef\xbb\xbfhostname set-plat-hostname \x1b[31mtür"));
}

TEST(Parse, ListsAreCounted)
{
    EXPECT_EQ("ethmgr (SAP 7) 0x700b | option 1 | 9 str \"lan\" | 11 i16 0\n",
              messages("ip set-dhcp-server-dns lan 1"));
    EXPECT_EQ("ethmgr (SAP 7) 0x700b | option 1 | 9 str \"lan\" | 11 i16 4 | 12 i32 16777217 (1.0.0.1) | 12 i32 "
              "33554433 (1.0.0.2) | 12 i32 50331649 (1.0.0.3) | 12 i32 67108865 (1.0.0.4)\n",
              messages("ip set-dhcp-server-dns lan 1 1.0.0.1 1.0.0.2 1.0.0.3 1.0.0.4"));
    EXPECT_EQ("", messages("ip set-dhcp-server-dns lan 1 1.0.0.1 1.0.0.2 1.0.0.3 1.0.0.4 1.0.0.5"));
    EXPECT_EQ("svcmgr (SAP 9) 0x9004 | option 1 | 1 str \"c\" | 2 str \"a\" | 2 str \"b\"\n",
              messages("svc set-service-chain 1 c a b"));
    std::string many = "svc set-service-chain 1 c";
    for (int i = 0; i < 256; i++) {
        many += " m";
    }
    EXPECT_EQ("f:1:537: more than 255 in the list; wanted: mode chain_name [member...]", complaint(many));
}

TEST(Parse, OptionsStandAnywhereBeforeTheDashes)
{
    const char* const words[] = {"gpio", "--json", "set-value", "-1", "--sap", "0x1010", "--", "--yes"};
    const Options options = options_of({const_cast<char* const*>(words), std::size(words)});
    EXPECT_TRUE(options.json);
    EXPECT_FALSE(options.yes);
    EXPECT_EQ(0x1010, options.sap);
    ASSERT_EQ(4U, options.words.size());
    EXPECT_EQ("--yes", options.words[3].text);
}

TEST(Konfd, QueriesAreBuiltFromOptions)
{
    struct Case {
        const char* words;
        const char* outcome;
    } static const cases[] = {
        {"--set --line ssid x --pattern ssid --path interface wlan0",
         "konfd | 50 bytes | -s -l \"ssid x\" -r \"^ssid$\" \"interface wlan0\"\n"},
        {"--check --pattern a b --line a b --priority 5", "konfd | 31 bytes | -c -l \"a b\" -r \"^a b$\" -p 5\n"},
        {"--unset --pattern a --path b c --path d e", "konfd | 29 bytes | -u -r \"^a$\" \"b c\" \"d e\"\n"},
        {"--set --line password \"hush hush\" --pattern password",
         "konfd | 46 bytes | -s -l \"password ********\" -r \"^password$\"\n"},
        {"--set --pattern a", "f:1:30: --line is missing"},
        {"--line a b --pattern a", "f:1:35: --set, --check or --unset is missing"},
        {"--set --line a b", "f:1:29: --pattern is missing"},
        {"--unset --pattern a --line a b", "f:1:43: --unset takes no --line"},
        {"--set --line a b --pattern a --priority x", "f:1:53: priority: \"x\" is no number"},
        {"--set --line a --pattern a", "f:1:19: --line: its line value is missing"},
        {"--set --set", "f:1:19: one of --set, --check and --unset is enough"},
        {"--set --line a \"b\\\"c\" --pattern a",
         "f:1:28: line value: a double quote would break the command's quoting; konfd has no way to escape it"},
    };
    for (const Case& each : cases) {
        const std::string line = "konfd query " + std::string(each.words);
        const std::string wrong = complaint(line);
        EXPECT_EQ(each.outcome, wrong.empty() ? messages(line) : wrong) << line;
    }
}

TEST(Konfd, PasswordsAreMaskedWhereverACommandHasThem)
{
    EXPECT_EQ("-s -l \"password ********\" -r \"^password \" \"ssid password\"",
              without_passwords("-s -l \"password a b\" -r \"^password \" \"ssid password\""));
    EXPECT_EQ("-c -r \"^password ********\"", without_passwords("-c -r \"^password a$\""));
    EXPECT_EQ("the password is", without_passwords("the password is"));
}

// --- Verdicts -----------------------------------------------------------------

Message request(bool delivered, std::optional<std::int32_t> status = {}, std::uint32_t answer_id = 0x4004)
{
    Message message;
    message.sap = 4;
    message.id = 0x4004;
    message.delivered = delivered;
    message.answer_status = status;
    if (delivered) {
        message.answer_id = answer_id;
    }
    return message;
}

Message one_way(bool delivered)
{
    Message message = request(delivered);
    message.way = Way::one_way;
    return message;
}

Message timed_out()
{
    Message message = request(false);
    message.timed_out = true;
    return message;
}

Message konfd(bool delivered, std::optional<std::string> answer)
{
    Message message;
    message.way = Way::konfd;
    message.delivered = delivered;
    message.answer = std::move(answer);
    return message;
}

TEST(Verdict, TellsWhatWasSeen)
{
    const Row& setter = *row_named("gpio", "set-direction");
    const Row& unread = *row_named("serial", "set-parity");
    const Row& stub = *row_named("ip", "get-ip-address");
    const Row& stored = *row_named("konfd", "set-interface-ip");
    struct Case {
        const Row& row;
        std::int32_t code;
        std::int32_t manager_errno;
        std::vector<Message> messages;
        const char* name;
        int exit;
    } const cases[] = {
        {setter, 0, 0, {request(true, 0)}, "accepted", 0},
        {setter, -1, 7, {request(true, 7)}, "refused", 1},
        {setter, -1001, 0, {request(true, 0)}, "refused", 1},
        {setter, -1, 0, {request(true, 7, 0x4009)}, "unread", 5},
        {setter, -4, 0, {request(true, {})}, "unread", 5},
        {setter, -3, 0, {request(false)}, "not delivered", 3},
        {setter, -3, 0, {timed_out()}, "unknown", 6},
        {setter, -4, 0, {}, "not sent", 4},
        {setter, 0, 0, {one_way(true)}, "sent", 0},
        {setter, 0, 0, {one_way(false)}, "not delivered", 3},
        {setter, -3, 0, {one_way(true)}, "contradiction", 9},
        {setter, 0, 0, {request(true, 0), one_way(true)}, "accepted", 0},
        {setter, -3, 0, {request(true, 0), one_way(false)}, "not delivered", 3},
        {unread, -4, 0, {request(true, 0)}, "unread", 5},
        {stub, 0, 0, {}, "nothing to do", 0},
        {stored, 0, 0, {konfd(true, "-o")}, "accepted", 0},
        {stored, -1, 0, {konfd(true, "-e")}, "refused", 1},
        {stored, -1, 0, {konfd(true, {})}, "unknown", 6},
        {stored, -1, 0, {konfd(false, {})}, "not delivered", 3},
        {stored, -1, 0, {konfd(true, "-o")}, "contradiction", 9},
    };
    for (const Case& each : cases) {
        Returned back;
        back.code = each.code;
        Observation seen;
        seen.messages = each.messages;
        const Verdict verdict = judged(each.row, back, each.manager_errno, seen);
        EXPECT_EQ(each.name, name_of(verdict.outcome)) << verdict.text;
        EXPECT_EQ(each.exit, exit_of(verdict.outcome)) << verdict.text;
    }
}

TEST(Json, EscapesWhatJsonCannotHold)
{
    EXPECT_EQ(R"("a\"b\\c\u000a\u0001é\u00ff\u00c3")", json_quoted("a\"b\\c\n\x01é\xff\xc3"));
}

// --- As a process ----------------------------------------------------------------

struct Line {
    const char* command;
    const char* text;
    int exit;
};

void expect(const processes::Workplace& workplace, std::initializer_list<Line> lines)
{
    for (const Line& line : lines) {
        const processes::Output output = workplace.run(line.command);
        EXPECT_EQ(line.text, output.text) << line.command;
        EXPECT_EQ(line.exit, output.exit_code) << line.command;
    }
}

TEST(Process, OutcomesHaveTheirExitCodes)
{
    const processes::Workplace workplace;
    static constexpr char stop[] = "printf 'gpio set-value 1 1\\nip set-dhcp 0 1\\ngpio set-value 2 1\\n' > f; ";
    const std::string batch = std::string(stop) + "vorcfg batch f";
    expect(workplace,
           {{"vorcfg ip set-ip-address 0 192.168.1.10 255.255.255.0 1",
             "ip set-ip-address: not delivered: exchange refused (code -3); is ethmgr running?\n", 3},
            {"vorcfg ip set-ip-address 3 192.168.1.10 255.255.255.0 1",
             "ip set-ip-address: nothing was sent (code -4)\n", 4},
            {"vorcfg ip set-ip-address 300 192.168.1.10 255.255.255.0 1",
             "vorcfg: ip set-ip-address: interface_number: 300 is out of range, 0 to 255 is accepted\n", 2},
            {"vorcfg common ip-aton 1.2.3", "common ip-aton: not taken by the call (code -1)\n", 2},
            {"vorcfg batch nowhere", "vorcfg: cannot read nowhere: No such file or directory\n", 8},
            {"vorcfg batch bin", "vorcfg: cannot read bin: Is a directory\n", 8},
            {"vorcfg batch - < bin", "vorcfg: cannot read standard input: Is a directory\n", 8},
            {"vorcfg gsm set-password 1 @bin 1",
             "vorcfg: gsm set-password: password: cannot read bin: Is a directory\n", 8},
            {"vorcfg GPIO set-value 1 1", "vorcfg: no family \"GPIO\"; is it gpio?\n", 2},
            {"vorcfg gpio blink", "vorcfg: gpio has no call \"blink\"; vorcfg gpio --help lists them\n", 2},
            {"vorcfg -x", "vorcfg: unknown option -x; put -- before a text that begins with two dashes\n", 2},
            {batch.c_str(),
             "f:1: gpio set-value: not delivered: nobody listens; is gpiomgr running?\n"
             "f: 0 accepted, 0 sent, 1 failed at line 1, 2 not made\n",
             3},
            {"vorcfg --dry-run batch f | tail -n 1", "f: 0 accepted, 0 sent, 3 shown only (dry run), 0 failed\n", 0}});
    processes::Gateway gateway(workplace, {});
    expect(
        workplace,
        {{"vorcfg ip set-ip-address 0 192.168.1.10 255.255.255.0 1", "ip set-ip-address: accepted by ethmgr\n", 0},
         {"vorcfg serial set-parity 1 0",
          "serial set-parity: delivered to serialmgr, verdict unread by this call (its answer carried status 0)\n", 5},
         {"vorcfg common system-restart 0", "vorcfg: common system-restart is made only with --yes\n", 2},
         {"printf 'ip set-ip-address 3 1.2.3.4 255.0.0.0 1\\nserial set-parity 1 0\\ngpio set-value 2 1\\n' | "
          "vorcfg --keep-going batch -",
          "standard input:1: ip set-ip-address: nothing was sent (code -4)\n"
          "standard input:2: serial set-parity: delivered to serialmgr, verdict unread by this call (its answer "
          "carried status 0)\n"
          "standard input:3: gpio set-value: sent to gpiomgr one-way, no verdict will come\n"
          "standard input: 0 accepted, 1 sent, 1 delivered with their verdict unread, 1 failed at line 1\n",
          4}});
    const processes::Output site = workplace.run("vorcfg batch examples/site.conf | tail -n 1");
    EXPECT_EQ("examples/site.conf: 130 accepted, 22 sent, 4 delivered with their verdict unread, 0 failed\n",
              site.text);
}

TEST(Process, SecretsComeFromFilesAndStandardInputOnly)
{
    const processes::Workplace workplace;
    processes::Gateway gateway(workplace, {"--strict"});
    expect(workplace,
           {{"vorcfg gsm set-password 1 hush 1",
             "vorcfg: gsm set-password: password: a secret is not taken from the command line, where others can read "
             "it; give @FILE, - for a line of standard input, or '?' for a prompt\n",
             2},
            {"echo hush | vorcfg --trace gsm set-password 1 - 1",
             "> gsmmgr (SAP 12) 0xc00a | 1 i16 1 | 3 str ******** | 8 i16 1\n"
             "< 0xc00a status 0\n"
             "gsm set-password: accepted by gsmmgr\n",
             0},
            {"echo hush > secret; vorcfg --trace wifi set-ssid-password Tower17 --password-file secret",
             "> konfd | 50 bytes | -s -l \"ssid Tower17\" -r \"^ssid \" \"interface wlan0\"\n"
             "> konfd | 70 bytes | -s -l \"password ********\" -r \"^password \" \"interface wlan0\" \"ssid Tower17\"\n"
             "< konfd -o\n"
             "wifi set-ssid-password: accepted by konfd\n",
             0},
            {"echo 'gsm set-password 1 @../secret 1' > bin/f; vorcfg batch bin/f",
             "bin/f:1: gsm set-password: accepted by gsmmgr\n"
             "bin/f: 1 accepted, 0 sent, 0 failed\n",
             0},
            {"vorcfg gsm set-password 1 @nowhere 1",
             "vorcfg: gsm set-password: password: cannot read nowhere: No such file or directory\n", 8}});
    EXPECT_EQ(0, gateway.stop(SIGTERM));
}

TEST(Process, ShellsRunSideBySide)
{
    const processes::Workplace workplace;
    processes::Gateway gateway(workplace, {});
    const std::string one = "for i in 1 2 3 4 5; do vorcfg gpio set-value $i 1 & done; wait";
    std::string five;
    for (int i = 0; i < 5; i++) {
        five += "gpio set-value: sent to gpiomgr one-way, no verdict will come\n";
    }
    EXPECT_EQ(five, workplace.run(one).text);
}

TEST(Process, AnEndpointThatCannotBeHadIsSaidOnce)
{
    const processes::Workplace workplace;
    const processes::Output output = workplace.run("VORINFRA_DIR=relative vorcfg gpio set-value 1 1");
    EXPECT_EQ(7, output.exit_code);
    EXPECT_NE(std::string::npos, output.text.find("gpio set-value: nothing was sent: no endpoint at any SAP\n"))
        << output.text;
    EXPECT_EQ(output.text.find("library: vorinfra:"), output.text.rfind("library: vorinfra:")) << output.text;
}

} // namespace
