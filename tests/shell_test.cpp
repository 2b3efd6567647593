// vorcfg's words, complaints, verdicts and exit codes.
#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>

#include "call/batch.hpp"
#include "call/verdict.hpp"
#include "input/options.hpp"
#include "output/output.hpp"
#include "processes.hpp"
#include "rows/families.hpp"
#include "text/text.hpp"

using namespace vorcfg;

namespace {

// What a batch comes to: its complaints, else its messages, one a line.
std::string outcome_of(std::string lines)
{
    Variables variables;
    variables.set("site=17");
    variables.set("name=a \"b\" port_num=1 ${site} #");
    Batch batch(std::move(lines), "f", {.literals = true}, std::move(variables));
    std::string complaints;
    std::string messages;
    for (bool more = true; more;) {
        try {
            auto planned = batch.next();
            more = planned.has_value();
            if (more) {
                const CallResult report = Session({.capture = true}, std::nullopt).make(*planned);
                for (const Message& message : report.seen.messages) {
                    messages += described(message, *planned->row, planned->values) + '\n';
                }
            }
        } catch (const InputError& complaint) {
            complaints += text_of(complaint);
        }
    }
    return complaints.empty() ? messages : complaints;
}

struct Case {
    const char* line;
    const char* outcome;
};

void expect_outcomes(std::initializer_list<Case> cases)
{
    for (const Case& each : cases) {
        EXPECT_EQ(each.outcome, outcome_of(each.line)) << each.line;
    }
}

TEST(input, invalid_values)
{
    expect_outcomes({
        {"gpio set-direction 1 0x8000 0", "f:1:22: direction: 0x8000 is out of range, -32768 to 32767 is accepted\n"},
        {"can set-peer-id 1 99999999999999999999 1",
         "f:1:19: peer_id: 99999999999999999999 is out of range, 0 to 4294967295 is accepted\n"},
        {"gpio set-value 1x 0",
         "f:1:16: port_num: \"1x\" is no number; a number from 0 to 65535 is wanted, decimal or 0x\n"},
        {"gpio set-value \"\" 0x",
         "f:1:16: port_num: \"\" is no number; a number from 0 to 65535 is wanted, decimal or 0x\n"},
        {"ip enable-ip-routing on",
         "f:1:22: enable_status: \"on\" is no number; a number from 0 to 65535, or enable, disable is wanted, decimal "
         "or 0x\n"},
        {"ip set-dhcp-server-dns lan 1 9.9.9.9 9.9.9.256",
         "f:1:38: dns_server: \"9.9.9.256\" is no IPv4 address such as 192.168.1.10\n"},
        {"ip set-dhcp-server-dns lan 1 9.9.9.9 9.9.9.9 9.9.9.9 9.9.9.9 9.9.9.9",
         "f:1:62: dns_server: more than 4 in the list; wanted: pool_name config_option [dns_server...]\n"},
        {"debug set-log-file file-name 0123456789012345678901234567890123456789012345678 "
         "01234567890123456789012345678901234567890123456789 \"\" \"\" \"\" 0",
         "f:1:80: log_file_name: 50 bytes are too many, 49 fit\n"},
        {"debug set-log-file 4 a b c d e 0",
         "f:1:20: set_option: ******** is out of range, 1 to 3, or server, file-name, frequency is accepted\n"},
    });
    const std::string long_name(5000, 'x');
    EXPECT_EQ("f:1:28: hostname: does not fit: 5000 bytes of text, and a message holds 4096 with what stands around "
              "them\n",
              outcome_of("hostname set-plat-hostname " + long_name));
}

TEST(input, batch_errors_have_positions)
{
    using namespace std::string_literals;
    EXPECT_EQ("f:2:6: gpio has no call \"set-valeu\"; is it set-value?\n"
              "f:3:3: no family \"gpoi\"; is it gpio?\n"
              "f:4:1: the call's name is missing; vorcfg gpio --help lists them\n"
              "f:5:17: value: is missing; wanted: port_num value\n"
              "f:6:20: one argument too many: \"3\"; wanted: port_num value\n"
              "f:7:28: the text that begins here is not closed\n"
              "f:8:29: a backslash stands before a double quote or a backslash only\n"
              "f:9:29: a double quote within a word\n"
              "f:10:31: a blank is missing behind the text\n"
              "f:11:7: cannot be called on its own; what uses it: konfd query\n"
              "f:12:28: ssid: a double quote would break the command's quoting; konfd has no way to escape it\n"
              "f:13:30: a zero byte\n",
              outcome_of("gpio set-value 1 1\n"
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
                         "wifi set-ssid-password     \"a\\\"b\" x\n"
                         "hostname set-plat-hostname \"a\0b\"\n"s));
}

TEST(input, quoting_and_lists)
{
    expect_outcomes({
        {"  hostname set-plat-hostname \"a b \\\\ \\\"c\\\" # d\" # e\r\n# f\n\n",
         "datamgr (SAP 10) 0xa00a one-way | 3 str \"a b \\\\ \\\"c\\\" # d\"\n"},
        {"hostname set-plat-hostname \"\"", "datamgr (SAP 10) 0xa00a one-way | 3 str \"\"\n"},
        {"ip set-dhcp-server-dns lan 1", "ethmgr (SAP 7) 0x700b | option 1 | 9 str \"lan\" | 11 i16 0\n"},
        {"ip set-dhcp-server-dns lan 1 1.0.0.1 1.0.0.2",
         "ethmgr (SAP 7) 0x700b | option 1 | 9 str \"lan\" | 11 i16 2 | 12 i32 16777217 (1.0.0.1) | 12 i32 33554433 "
         "(1.0.0.2)\n"},
        {"ip enable-ip-routing disable", "ethmgr (SAP 7) 0x700f one-way | enable_status 1 (disable)\n"},
        {"svc tp-set-app uplink telemetry 65535",
         "SAP 65535 (SAP 65535) 0xfffe029 one-way | 1 str \"uplink\" | 2 str \"telemetry\"\n"},
    });
}

TEST(input, named_arguments)
{
    for (const char* const line :
         {"gpio set-direction port_num=3 direction=1 option=0", "gpio set-direction 3 option=0 direction=\"1\""}) {
        EXPECT_EQ(outcome_of("gpio set-direction 3 1 0"), outcome_of(line)) << line;
    }
    expect_outcomes({
        {"ip set-dhcp-server-dns pool_name=lan dns_server=1.0.0.1 config_option=1 dns_server=1.0.0.2",
         "ethmgr (SAP 7) 0x700b | option 1 | 9 str \"lan\" | 11 i16 2 | 12 i32 16777217 (1.0.0.1) | 12 i32 33554433 "
         "(1.0.0.2)\n"},
        {"hostname set-plat-hostname tower=17", "datamgr (SAP 10) 0xa00a one-way | 3 str \"tower=17\"\n"},
        {"hostname set-plat-hostname hostname=hostname=x", "datamgr (SAP 10) 0xa00a one-way | 3 str \"hostname=x\"\n"},
        {"hostname set-plat-hostname \"hostname=x\"", "datamgr (SAP 10) 0xa00a one-way | 3 str \"hostname=x\"\n"},
        {"gpio set-direction 3 directoin=1 option=0", "f:1:22: no argument \"directoin\"; is it direction?\n"},
        {"gpio set-direction 3 direction=1 x=0", "f:1:34: no argument \"x\"; is it port_num, direction or option?\n"},
        {"gpio set-direction 3 direction=1 port_num=4 option=1", "f:1:34: port_num: is given twice\n"},
        {"gpio set-direction 3 direction=1 direction=2 option=1", "f:1:34: direction: is given twice\n"},
        {"gpio set-direction direction=1 option=70000 port_num=1",
         "f:1:32: option: 70000 is out of range, -32768 to 32767 is accepted\n"},
        {"gpio set-direction direction=1 option=1", "f:1:40: port_num: is missing\n"},
        {"gpio set-direction direction=1 7", "f:1:32: a word without a name stands before those with one\n"},
        {"gsm set-password 1 passwrod=hush option=1", "f:1:20: no argument \"********\"; is it password?\n"},
        {"debug set-log-file set_option=frequency name=site-log upload_frequency=60",
         "platmgr (SAP 2) 0x2028 one-way | set_option 3 (frequency) | name \"site-log\" | upload_frequency 60\n"},
        {"debug set-log-file frequency name=site-log",
         "f:1:43: upload_frequency: is missing; wanted: set_option name log_file_name ip_address user_name password "
         "upload_frequency\n"},
        {"debug set-log-file file-name site-log t.log \"\" \"\" hush 0",
         "f:1:51: password: is sent only where set_option is server; \"\" stands for it here\n"},
    });
}

TEST(input, variables)
{
    expect_outcomes({
        {"hostname set-plat-hostname tower-${site}-${site}",
         "datamgr (SAP 10) 0xa00a one-way | 3 str \"tower-17-17\"\n"},
        {"hostname set-plat-hostname ${name}",
         "datamgr (SAP 10) 0xa00a one-way | 3 str \"a \\\"b\\\" port_num=1 ${site} #\"\n"},
        {"hostname set-plat-hostname \"$ ${site} $${site} $$x\"",
         "datamgr (SAP 10) 0xa00a one-way | 3 str \"$ 17 ${site} $$x\"\n"},
        {"gpio set-value ${site} ${siet}", "f:1:24: no variable siet; is it site?\n"},
        {"gpio set-value 1 x${}", "f:1:19: ${ begins a variable, ${name}; $${ stands for the two characters\n"},
        {"gpio set-value ${site}x 1",
         "f:1:16: port_num: \"17x\" is no number; a number from 0 to 65535 is wanted, decimal or 0x\n"},
    });
}

TEST(input, control_characters_are_escaped)
{
    EXPECT_EQ("datamgr (SAP 10) 0xa00a one-way | 3 str \"\\x1b[31mtür\\xc2\\x9b\\x9b\\xc0\\xaf\\xed\\xa0\\x80\"\n",
              outcome_of("\xef\xbb\xbfhostname set-plat-hostname \x1b[31mtür\xc2\x9b\x9b\xc0\xaf\xed\xa0\x80"));
}

TEST(options, anywhere_before_double_dash)
{
    const char* const words[] = {"gpio", "--json", "set-value", "-1", "--sap=0x1010", "--", "--yes"};
    const Options options = options_of({const_cast<char* const*>(words), std::size(words)});
    EXPECT_TRUE(options.json);
    EXPECT_FALSE(options.yes);
    EXPECT_EQ(0x1010, options.sap);
    ASSERT_EQ(4U, options.words.size());
    EXPECT_EQ("--yes", options.words[3].text);
}

TEST(konfd_query, built_from_options)
{
    struct QueryCase {
        const char* words;
        const char* outcome;
    } static const cases[] = {
        {"--set --line ssid x --pattern ssid --path interface wlan0",
         "konfd | 50 bytes | -s -l \"ssid x\" -r \"^ssid$\" \"interface wlan0\"\n"},
        {"--check --pattern a b --line a b --priority 5", "konfd | 31 bytes | -c -l \"a b\" -r \"^a b$\" -p 5\n"},
        {"--unset --pattern a --path b c --path d e", "konfd | 29 bytes | -u -r \"^a$\" \"b c\" \"d e\"\n"},
        {"--set --line password \"hush hush\" --pattern password",
         "konfd | 46 bytes | -s -l \"password ********\" -r \"^password$\"\n"},
        {"--set --line password @nowhere --pattern password",
         "f:1:35: line_value: cannot read nowhere: No such file or directory\n"},
        {"--set --line password hush hush --pattern password",
         "f:1:40: unknown word ********; wanted: --set|--check|--unset --line KEY VALUE --pattern KEY [VALUE] [--path "
         "KEY VALUE]... [--priority N]\n"},
        {"--set --pattern a", "f:1:30: line_key: --line is missing\n"},
        {"--line a b --pattern a", "f:1:35: operation: --set, --check or --unset is missing\n"},
        {"--set --line a b", "f:1:29: pattern_key: --pattern is missing\n"},
        {"--unset --pattern a --line a b", "f:1:43: line_key: --unset takes no --line\n"},
        {"--set --line a b --pattern a --priority x",
         "f:1:53: priority: \"x\" is no number; a number from -2147483648 to 2147483647 is wanted, decimal or 0x\n"},
        {"--set --line a --pattern a", "f:1:19: line_value: --line: its value is missing\n"},
        {"--set --set", "f:1:19: operation: one of --set, --check and --unset is enough\n"},
        {"--set --line a \"b\\\"c\" --pattern a",
         "f:1:28: line_value: a double quote would break the command's quoting; konfd has no way to escape it\n"},
    };
    for (const QueryCase& each : cases) {
        EXPECT_EQ(each.outcome, outcome_of("konfd query " + std::string(each.words))) << each.words;
    }
}

TEST(konfd_query, passwords_are_masked)
{
    EXPECT_EQ("-s -l \"password ********\" -r \"^password \" \"ssid password\"",
              without_secrets("-s -l \"password a b\" -r \"^password \" \"ssid password\"", {}));
    EXPECT_EQ("-c -r \"^password ********\"", without_secrets("-c -r \"^password a$\"", {}));
    EXPECT_EQ("the password is", without_secrets("the password is", {}));
}

// --- Verdicts -----------------------------------------------------------------

Message by(Way way, bool delivered)
{
    Message message;
    message.way = way;
    message.sap = 4;
    message.delivered = delivered;
    return message;
}

Message request(std::optional<std::int32_t> status)
{
    Message message = by(Way::request, true);
    message.answer_status = status;
    return message;
}

Message konfd_command(const char* answer)
{
    Message message = by(Way::konfd, true);
    message.answer = answer;
    return message;
}

TEST(verdict, outcome_and_exit_code)
{
    const Row& setter = *row_named("gpio", "set-direction");
    const Row& unread = *row_named("serial", "set-parity");
    const Row& stub = *row_named("ip", "get-ip-address");
    const Row& stored = *row_named("konfd", "set-interface-ip");
    const Message one_way = by(Way::one_way, true);
    const Message unsent = by(Way::one_way, false);
    Message unserved = unsent;
    unserved.unserved = true;
    Message timed_out = by(Way::request, false);
    timed_out.timed_out = true;
    struct VerdictCase {
        const Row& row;
        std::int32_t code;
        std::int32_t manager_errno;
        std::vector<Message> messages;
        const char* name;
        int exit;
    } const cases[] = {
        {setter, 0, 0, {request(0)}, "accepted", 0},
        {setter, -1, 7, {request(7)}, "refused", 1},
        {setter, -1001, 0, {request(0)}, "refused", 1},
        {setter, -1, 0, {request(7)}, "unread", 5},
        {setter, -4, 0, {request({})}, "unread", 5},
        {setter, -3, 0, {by(Way::request, false)}, "not delivered", 3},
        {setter, -3, 0, {timed_out}, "unknown", 6},
        {setter, -4, 0, {}, "not sent", 4},
        {setter, 0, 0, {one_way}, "sent", 0},
        {setter, 0, 0, {unserved}, "not delivered", 3},
        {setter, 0, 0, {unsent}, "not delivered", 3},
        {setter, -3, 0, {one_way}, "contradiction", 9},
        {setter, 0, 0, {request(0), one_way}, "accepted", 0},
        {setter, 0, 0, {request(0), unserved}, "not delivered", 3},
        {setter, -3, 0, {request(0), unsent}, "not delivered", 3},
        {unread, -4, 0, {request(0)}, "unread", 5},
        {stub, 0, 0, {}, "nothing to do", 0},
        {stored, 0, 0, {konfd_command("-o")}, "accepted", 0},
        {stored, -1, 0, {konfd_command("-e")}, "refused", 1},
        {stored, -1, 0, {by(Way::konfd, true)}, "unknown", 6},
        {stored, -1, 0, {by(Way::konfd, false)}, "not delivered", 3},
        {stored, -1, 0, {konfd_command("-o")}, "contradiction", 9},
    };
    for (const VerdictCase& each : cases) {
        Returned back;
        back.code = each.code;
        Observation seen;
        seen.messages = each.messages;
        const Verdict verdict = judged(each.row, back, each.manager_errno, seen);
        EXPECT_EQ(each.name, name_of(verdict.outcome)) << verdict.text;
        EXPECT_EQ(each.exit, exit_of(verdict.outcome)) << verdict.text;
    }
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

TEST(vorcfg, exit_codes)
{
    const processes::Workplace workplace;
    expect(workplace,
           {{"vorcfg common ip-aton 1.2.3", "common ip-aton: not taken by the call (code -1)\n", 2},
            {"vorcfg batch nowhere", "vorcfg: cannot read nowhere: No such file or directory\n", 8},
            {"vorcfg batch bin", "vorcfg: cannot read bin: Is a directory\n", 8},
            {"vorcfg batch - < bin", "vorcfg: cannot read standard input: Is a directory\n", 8},
            {"vorcfg gsm set-password 1 @bin 1",
             "vorcfg: gsm set-password: password: cannot read bin: Is a directory\n", 8},
            {"printf 'gpio set-value 1 1\\nip set-dhcp 0 1\\ngpio set-value 2 1\\n' > f; vorcfg batch f",
             "f:1: gpio set-value: not delivered: nobody listens; is gpiomgr running?\n"
             "f: 0 accepted, 0 sent, 1 failed at line 1, 2 not made\n",
             3},
            {"vorcfg --dry-run batch f | tail -n 1", "f: 0 accepted, 0 sent, 3 shown only (dry run), 0 failed\n", 0}});
    processes::Gateway gateway(workplace, {});
    expect(workplace,
           {{"vorcfg common system-restart 0", "vorcfg: common system-restart: is made only with --yes\n", 2},
            {"printf 'ip set-dhcp 0 1\\nserial set-parity 1 0\\nip set-dhcp 0 300\\ngpio set-value 2 1\\n' > f; "
             "vorcfg --json batch f",
             "{\"schema\":2,\"file\":\"f\",\"line\":3,\"column\":15,\"call\":\"ip "
             "set-dhcp\",\"argument\":\"config_option\",\"complaint\":\"300 is out of range, 0 to 255 is "
             "accepted\",\"exit\":2}\n",
             2},
            {"printf 'ip set-dhcp 0 1\\n  common system-restart 0\\n' > f; vorcfg batch f",
             "f:2:10: is made only with --yes\n", 2}});
}

TEST(vorcfg, oversized_input_is_refused)
{
    expect(processes::Workplace(),
           {{"vorcfg batch /dev/zero", "vorcfg: /dev/zero: line 1 has more than 65536 bytes\n", 2},
            {"vorcfg < /dev/zero",
             "standard input:1:1: a line of more than 65536 bytes; it and what follows it is not read\n", 2},
            {"yes | vorcfg check -", "vorcfg: standard input has more than 64 MiB\n", 2},
            {"vorcfg gsm set-password 1 @/dev/zero 1",
             "vorcfg: gsm set-password: password: /dev/zero: line 1 has more than 65536 bytes\n", 2},
            {"printf 'gpio set-value 1 ${x}\\r\\n' > f; vorcfg plan f --set x=1 --journal /dev/null",
             "vorcfg: /dev/null: is no file\n", 12},
            {"printf '\\357\\273\\277x=1\\r\\n' > v; vorcfg check f --vars v", "f: 1 call, nothing to complain about\n",
             0}});
}

TEST(options, timeout_units)
{
    const auto seconds = [](const std::string& text) { return options_of(words_of("--timeout " + text), {}).timeout; };
    for (const char* const text : {"7200", "7200s", "0x1c20", "120m", "120min", "2h", "7200000ms"}) {
        EXPECT_EQ(7200U, seconds(text)) << text;
    }
    for (const char* const text : {"0", "500ms", "86401", "25h", "2hours", "s", "-1"}) {
        EXPECT_THROW(seconds(text), InputError) << text;
    }
}

TEST(vorcfg, suggestions)
{
    const processes::Workplace workplace;
    expect(workplace,
           {{"vorcfg GPIO set-value 1 1", "vorcfg: no family \"GPIO\"; is it gpio?\n", 2},
            {"vorcfg gipo set-value 1 1", "vorcfg: no family \"gipo\"; is it gpio?\n", 2},
            {"vorcfg value", "vorcfg: no family \"value\"; is it gpio set-value or sub1g get-reg-values?\n", 2},
            {"vorcfg lst", "vorcfg: no family \"lst\"; is it list?\n", 2},
            {"vorcfg gpio vale 1 1", "vorcfg: gpio has no call \"vale\"; is it set-value?\n", 2},
            {"vorcfg gpio blink", "vorcfg: gpio has no call \"blink\"; vorcfg gpio --help lists them\n", 2},
            {"vorcfg --drry-run", "vorcfg: unknown option --drry-run; is it --dry-run?\n", 2},
            {"vorcfg gpio set-value 5 1 --confirm 60", "vorcfg: --confirm is for apply, not for a call\n", 2},
            {"vorcfg batch f --from 3", "vorcfg: --from is for plan, apply, not for batch\n", 2},
            {"vorcfg -x", "vorcfg: unknown option -x; put -- before a text that begins with two dashes\n", 2},
            {"vorcfg search nothing-such", "vorcfg: nothing is known of \"nothing-such\"\n", 2}});
}

TEST(vorcfg, secrets_from_files_and_standard_input)
{
    const processes::Workplace workplace;
    processes::Gateway gateway(workplace, {"--strict"});
    expect(workplace,
           {{"vorcfg konfd query --set --line interface wlan0 --pattern interface wlan0 >bin/made; "
             "echo hush > secret; vorcfg --trace wifi set-ssid-password Tower17 --password-file secret",
             "> konfd | 50 bytes | -s -l \"ssid Tower17\" -r \"^ssid \" \"interface wlan0\"\n"
             "> konfd | 70 bytes | -s -l \"password ********\" -r \"^password \" \"interface wlan0\" \"ssid Tower17\"\n"
             "< konfd -o\n"
             "wifi set-ssid-password: accepted by konfd\n",
             0},
            {"echo 'gsm set-password 1 @../secret 1' > bin/f; vorcfg batch bin/f",
             "bin/f:1: gsm set-password: accepted by gsmmgr\n"
             "bin/f: 1 accepted, 0 sent, 0 failed\n",
             0},
            {"printf 'one\\ntwo\\n' | vorcfg snmp set-v2-server-community-name - 1 1",
             "snmp set-v2-server-community-name: sent to snmpmgr one-way, no verdict will come\n", 0},
            {"vorcfg gsm set-password 1 @nowhere 1",
             "vorcfg: gsm set-password: password: cannot read nowhere: No such file or directory\n", 8},
            {": > secret; vorcfg gsm set-password 1 @secret 1",
             "vorcfg: gsm set-password: password: secret has no secret; an empty one is \"\" in a batch file\n", 8},
            {"printf '\\357\\273\\277hush' > secret; vorcfg gsm set-password 1 @secret 1",
             "vorcfg: gsm set-password: password: secret begins with a byte order mark; save it as plain text\n", 8},
            {"printf 'hush\\r\\n' | vorcfg gsm set-password 1 - 1",
             "vorcfg: gsm set-password: password: standard input ends with a carriage return; save it with lines that "
             "end as here\n",
             8}});
    EXPECT_EQ(0, gateway.stop(SIGTERM));
}

TEST(vorcfg, parallel_calls)
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

TEST(vorcfg, missing_endpoint_is_reported_once)
{
    const processes::Workplace workplace;
    const processes::Output output = workplace.run("VORINFRA_DIR=relative vorcfg gpio set-value 1 1");
    EXPECT_EQ(7, output.exit_code);
    EXPECT_NE(std::string::npos, output.text.find("gpio set-value: nothing was sent: no endpoint at any SAP\n"))
        << output.text;
    EXPECT_EQ(output.text.find("library: vorinfra:"), output.text.rfind("library: vorinfra:")) << output.text;
}

} // namespace
