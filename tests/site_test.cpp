// vorcfg's journal: applies that are killed, confirmed, interrupted, and what no file may hold.
#include <algorithm>
#include <csignal>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "processes.hpp"
#include "text/json.hpp"

using processes::contents;
using processes::Gateway;
using processes::Output;
using processes::Terminal;
using processes::Tool;
using processes::Workplace;
using vor::Json;

namespace {

std::vector<Json> records(const std::filesystem::path& journal)
{
    std::vector<Json> all;
    std::istringstream lines(contents(journal));
    for (std::string line; std::getline(lines, line);) {
        all.push_back(Json::read(line).value_or(Json()));
    }
    return all;
}

std::string text_of(const Json& json)
{
    return json.is_string() ? json.string() : vor::dump(json);
}

// What the gateway was told: its messages from a number on, as `call object values`.
std::vector<std::string> told(const Workplace& workplace, std::size_t from = 0)
{
    std::vector<std::string> messages;
    for (const Json& each : records(workplace.path() / "gateway.journal")) {
        if (!each.contains("seq")) {
            continue; // the head of the journal
        }
        if (from != 0) {
            from--;
        } else {
            const auto held = [&each](const char* name) {
                const Json* const found = each.find(name);
                return found != nullptr ? text_of(*found) : std::string("null");
            };
            messages.push_back(held("call") + ' ' + held("object") + ' ' + held("values"));
        }
    }
    return messages;
}

void write(const Workplace& workplace, const std::string& file, const std::string& text)
{
    std::ofstream(workplace.path() / file) << text;
}

class Site : public testing::Test {
protected:
    std::vector<std::string> apply(const std::vector<std::string>& options = {}) const
    {
        std::vector<std::string> command{workplace.path() / "bin/vorcfg", "apply", "f"};
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }

    Workplace workplace;
    Gateway gateway{workplace, {"--journal", "gateway.journal", "--lenient-konfd"}};
};

TEST_F(Site, killed_anytime_each_line_accepted_once)
{
    constexpr unsigned lines = 40; // more than are made between the kills
    std::string file;
    for (unsigned i = 1; i <= lines; i++) {
        file += "can set-id " + std::to_string(i) + " 7 1\n";
    }
    write(workplace, "f", file);
    std::mt19937 random(17);
    // how often each line was named before it was made again
    std::map<unsigned, unsigned> repeated;
    for (int round = 0; round < 6; round++) {
        Tool apply(workplace, "vorcfg", {"apply", "f", "--retry-unknown", "--trace"});
        std::string line = "none yet";
        const auto read_line = [&] {
            line = apply.next_line();
            if (line.find(": unknown: begun") != std::string::npos) {
                repeated[static_cast<unsigned>(std::stoul(line.substr(2)))]++;
            }
        };
        for (auto left = random() % 16; left > 0; left--) {
            read_line();
        }
        const bool between = random() % 2 == 0; // a message, and its answer
        if (between) {
            gateway.suspend();
            while (!line.empty() && !line.starts_with("> ")) {
                read_line();
            }
        }
        apply.stop(SIGKILL);
        while (!line.empty()) { // what it still had said
            read_line();
        }
        if (between) {
            gateway.resume();
        }
    }
    const Output plan = workplace.run("vorcfg plan f");
    const Output last = workplace.run("vorcfg apply f --retry-unknown");
    EXPECT_EQ(0, last.exit_code) << last.text;
    EXPECT_EQ(0, workplace.run("vorcfg plan f").exit_code);
    std::istringstream named(plan.text);
    for (std::string line; std::getline(named, line);) {
        if (line.find(": unknown: begun") != std::string::npos) {
            repeated[static_cast<unsigned>(std::stoul(line.substr(2)))]++;
        }
    }
    std::map<unsigned, unsigned> begun;
    std::map<unsigned, unsigned> accepted;
    std::map<unsigned, unsigned> line_of;
    for (const Json& record : records(workplace.path() / "f.journal")) {
        if (record.contains("begin")) {
            const auto line = record["line"].number<unsigned>();
            line_of[record["begin"].number<unsigned>()] = line;
            begun[line]++;
            EXPECT_EQ(0U, accepted[line]) << "made again though accepted: line " << line;
        } else if (record.contains("end") && record["done"] == Json(true)) {
            accepted[line_of[record["end"].number<unsigned>()]]++;
        }
    }
    std::map<unsigned, unsigned> received;
    for (const std::string& message : told(workplace)) {
        received[static_cast<unsigned>(std::stoul(message.substr(message.find("port ") + 5)))]++;
    }
    unsigned unknown = 0;
    for (unsigned line = 1; line <= lines; line++) {
        EXPECT_EQ(1U, accepted[line]) << line;
        EXPECT_LE(begun[line], repeated[line] + 1) << "not named before it was made again: line " << line;
        EXPECT_LE(received[line], begun[line]) << line;
        EXPECT_GE(received[line], 1U) << line;
        unknown += repeated[line];
    }
    EXPECT_GT(unknown, 0U) << "no kill hit a call under way";
}

TEST_F(Site, change_sends_changed_and_dependent_lines)
{
    EXPECT_EQ(0, workplace.run("vorcfg apply examples/site.conf").exit_code);
    const std::size_t before = told(workplace).size();
    workplace.run("sed -i 's/^ip set-ip-address 0 192.168.17.1 /ip set-ip-address 0 192.168.17.2 /;"
                  "s/^mqtt set-qos-level 1/mqtt set-qos-level 2/;s/^can set-id 1 0x18ff50e5/can set-id 1 5/'"
                  " examples/site.conf");
    const Output plan = workplace.run("vorcfg plan examples/site.conf");
    EXPECT_EQ(11, plan.exit_code);
    EXPECT_NE(std::string::npos, plan.text.find("5 to make (3 changed, 2 again), ")) << plan.text;
    EXPECT_EQ(0, workplace.run("vorcfg apply examples/site.conf").exit_code);
    EXPECT_EQ(
        (std::vector<std::string>{
            R"(vor_cfg_set_ip_address interface 0 {"interface_number":0,"config_option":1,"ip_address":"192.168.17.2","subnet_mask":"255.255.255.0"})",
            R"(vor_cfg_show_route_status interface 1 {"iface_num":1})",
            R"(vor_cfg_set_mqtt_qos_level session {"config_option":1,"qos":2})",
            R"(vor_cfg_mqtt_activate_session service uplink {"service_name":"uplink"})",
            R"(vor_cfg_set_can_id port 1 {"port_num":1,"can_id":5,"option":1})"}),
        told(workplace, before));
    EXPECT_EQ(0, workplace.run("vorcfg plan examples/site.conf").exit_code);
}

TEST_F(Site, terminal_shows_plan_and_asks_once)
{
    write(workplace, "f", "can set-id 1 7 1\nip set-dhcp 1 1\n");
    const std::vector<std::string> command = apply({"--gateway", "tower-17", "--confirm", "2m"});
    const auto asked = [](Terminal& terminal) { return terminal.shown_until(" [y/N] "); };
    for (const auto& [answer, exit_code] : {std::pair{"n\n", 2}, {"\n", 2}, {"\x03", 13}}) {
        Terminal terminal(workplace, command);
        const std::string shown = asked(terminal);
        for (const char* const text : {"    1 + can set-id 1   can_id 7, option 1\r\n",
                                       "Make 2 calls on tower-17? Reverted after 2 min unless confirmed."}) {
            EXPECT_NE(std::string::npos, shown.find(text)) << text << " is not in\n" << shown;
        }
        terminal.type(answer);
        const Output rest = terminal.rest();
        EXPECT_NE(std::string::npos, rest.text.find("othing was sent")) << rest.text;
        EXPECT_EQ(exit_code, rest.exit_code);
    }
    EXPECT_TRUE(told(workplace).empty());

    Terminal confirmed(workplace, command);
    asked(confirmed);
    confirmed.type("y\n");
    EXPECT_NE(std::string::npos, confirmed.shown_until("Press Enter to confirm").find("Applied: 2 accepted\r\n"));
    confirmed.type("no\n");
    confirmed.shown_until("Press Enter alone to confirm");
    confirmed.type("\n");
    const Output rest = confirmed.rest();
    EXPECT_NE(std::string::npos, rest.text.find("tower-17.journal: confirmed")) << rest.text;
    EXPECT_EQ(0, rest.exit_code);
    const Output again = Terminal(workplace, command).rest();
    EXPECT_NE(std::string::npos, again.text.find("Plan: nothing to make, 2 up to date")) << again.text;
    EXPECT_EQ(0, again.exit_code);

    // a call without a verdict is made again only after the answer
    workplace.run("sed -i '4s/true/null/' tower-17.journal");
    for (const char* const option : {"--yes", "--json"}) { // which ask nothing
        EXPECT_EQ(6, Terminal(workplace, apply({option, "--gateway", "tower-17"})).rest().exit_code);
    }
    Terminal unknown(workplace, apply({"--gateway", "tower-17"}));
    const std::string shown = asked(unknown);
    EXPECT_NE(std::string::npos, shown.find("? can set-id 1")) << shown;
    EXPECT_NE(std::string::npos, shown.find("line 1 may have been made already")) << shown;
    EXPECT_EQ(2U, told(workplace).size());
    unknown.type("y\n");
    EXPECT_NE(std::string::npos, unknown.rest().text.find("Applied: 1 accepted"));
    EXPECT_EQ(0, workplace.run("vorcfg plan f --gateway tower-17").exit_code);
}

TEST_F(Site, slow_apply_shows_progress)
{
    write(workplace, "f", "can set-id 1 7 1\ncan set-id 2 7 1\ncan set-id 3 7 1\ncan set-id 4 7 1\n");
    workplace.run("vorsim fault add 'canmgr: late 400ms'");
    const std::string shown = Terminal(workplace, apply({"--yes"})).rest().text;
    EXPECT_NE(std::string::npos, shown.find("\rcalls made: 3 of 4\x1b[K\r\x1b[K    4 accepted  can set-id 4")) << shown;
}

TEST_F(Site, opposite_call_makes_line_due)
{
    constexpr std::pair<const char*, const char*> opposites[] = {
        {"adc set-config-polling 1 1 1 1000 1", "adc reset-config-mode 1 1 1 0"},
        {"modbus set-config-polling energy 40001 3 1 1000 1", "modbus reset-config-mode energy 40001 3 1 0"},
        {"gpio set-config-interrupt 3 2 1 1", "gpio set-config-polling 3 1 500 1"},
        {"ip set-static-route 10.30.0.0 1", "ip remove-ip-route 10.30.0.0"},
        {"ip set-ip-address 0 192.168.1.10 255.255.255.0 1", "ip set-dhcp 0 1"}};
    for (const auto& [set, back] : opposites) {
        for (const char* const line : {set, back, set}) {
            write(workplace, "f", line);
            EXPECT_EQ(11, workplace.run("vorcfg plan f").exit_code) << line;
            EXPECT_EQ(0, workplace.run("vorcfg apply f").exit_code) << line;
        }
    }
}

// The waiting process is seen by what it does to the journal.
TEST_F(Site, unconfirmed_apply_is_reverted)
{
    write(workplace, "f", "ip set-dhcp 1 1\ncan set-id 1 7 1\ncan set-baudrate 1 250000 1\n");
    EXPECT_EQ(0, workplace.run("vorcfg apply f").exit_code);
    write(workplace, "f",
          "ip set-dhcp 1 0\ncan set-id 1 8 1\ncan set-baudrate 1 250000 1\nhostname set-plat-hostname t\n");
    EXPECT_EQ(2, workplace.run("vorcfg apply f --confirm 1").exit_code);
    const std::size_t before = told(workplace).size();

    Terminal attached(workplace, apply({"--confirm", "1", "--yes"}));
    attached.shown_until("Press Enter");
    const Output second = workplace.run("vorcfg apply f --confirm 1 --yes; echo $?");
    EXPECT_NE(std::string::npos, second.text.find("f.journal: not confirmed yet, the last apply will be reverted at"))
        << second.text;
    EXPECT_NE(std::string::npos, second.text.find("12\n")) << second.text;
    const Output end = attached.rest();
    EXPECT_EQ(14, end.exit_code) << end.text;
    for (const char* const text : {"f:2: can set-id 1: reverted to can_id 7, option 1",
                                   "f:4: hostname set-plat-hostname: not reverted: its earlier value is not known",
                                   "f.journal: partly reverted: 2 calls, but not line 4"}) {
        EXPECT_NE(std::string::npos, end.text.find(text)) << text << " is not in\n" << end.text;
    }
    EXPECT_EQ((std::vector<std::string>{R"(vor_cfg_set_dhcp interface 1 {"interface_number":1,"config_option":0})",
                                        R"(vor_cfg_set_can_id port 1 {"port_num":1,"can_id":8,"option":1})",
                                        R"(vor_cfg_set_plat_hostname gateway {"hostname":"t"})",
                                        R"(vor_cfg_set_can_id port 1 {"port_num":1,"can_id":7,"option":1})",
                                        R"(vor_cfg_set_dhcp interface 1 {"interface_number":1,"config_option":1})"}),
              told(workplace, before));

    const std::size_t reverted = told(workplace).size();
    EXPECT_EQ(0, workplace.run("vorcfg apply f --confirm 60 --yes").exit_code);
    EXPECT_EQ("f.journal: confirmed\n", workplace.run("vorcfg confirm f.journal").text);
    EXPECT_EQ(0, workplace.run("vorcfg plan f").exit_code);
    EXPECT_EQ(reverted + 2, told(workplace).size());
}

// The waiting process is seen by what it does to the journal.
TEST_F(Site, waiting_process_reverts_when_it_must)
{
    write(workplace, "f", "can set-id 1 7 1\n");
    EXPECT_EQ(0, workplace.run("vorcfg apply f").exit_code);
    write(workplace, "f", "can set-id 1 8 1\n");
    const auto kill_waiter = [&](int signal) {
        kill(records(workplace.path() / "f.journal").back()["process"].number<pid_t>(), signal);
    };

    // terminated, as when the machine is shut down
    EXPECT_EQ(0, workplace.run("vorcfg apply f --confirm 600").exit_code);
    kill_waiter(SIGTERM);
    workplace.run("tail -n +1 -f f.journal | grep -m 1 '\"taken_back\":true'; flock f.journal true");
    EXPECT_EQ(11, workplace.run("vorcfg plan f").exit_code);

    // killed: a person must decide, or the next apply after the deadline
    EXPECT_EQ(0, workplace.run("vorcfg apply f --confirm 600").exit_code);
    kill_waiter(SIGKILL);
    EXPECT_NE(std::string::npos,
              workplace.run("until vorcfg plan f 2>&1 | grep 'no process waits'; do :; done").text.find("no process"));
    EXPECT_EQ("f:1: can set-id 1: reverted to can_id 7, option 1\nf.journal: reverted: 1 call\n",
              workplace.run("vorcfg revert f.journal").text);

    // the change itself made the manager restart
    EXPECT_EQ(0, workplace.run("vorcfg apply f --confirm 1 && vorsim stop canmgr").exit_code);
    workplace.run("tail -n +1 -f f.journal | grep -m 1 'not delivered'");
    EXPECT_EQ(11, workplace.run("vorcfg report f.journal").exit_code);
    workplace.run(
        "vorsim start canmgr; until vorcfg plan f 2>&1 | grep 'id 1: changed: can_id 7 -> 8'; do sleep 0.1; done");
    EXPECT_EQ(R"(vor_cfg_set_can_id port 1 {"port_num":1,"can_id":7,"option":1})", told(workplace).back());
    EXPECT_GT(40, std::ranges::count_if(records(workplace.path() / "f.journal"),
                                        [](const Json& each) { return each.contains("takes_back"); }))
        << "an attempt follows the other at once";
}

TEST_F(Site, non_utf8_values_apply_and_revert)
{
    write(workplace, "f",
          "gpio set-channel-name 3 d\xff"
          "or 1\n");
    EXPECT_EQ(0, workplace.run("vorcfg apply f").exit_code);
    EXPECT_EQ(0, workplace.run("vorcfg plan f").exit_code);
    EXPECT_EQ(0, workplace.run("vorcfg report f.journal").exit_code);
    write(workplace, "f",
          "gpio set-channel-name 3 d\xfe"
          "or 1\nmodbus set-config-polling e\xfen 40001 3 1 1000 1\n");
    EXPECT_EQ(0, workplace.run("vorcfg apply f --confirm 60 --yes").exit_code);
    const Output reverted = workplace.run("vorcfg revert f.journal");
    EXPECT_EQ(14, reverted.exit_code) << reverted.text; // the second line has no earlier value
    EXPECT_NE(std::string::npos, told(workplace).back().find("d\xef\xbf\xbd"
                                                             "or"))
        << told(workplace).back();
}

TEST_F(Site, interruption_and_full_disk_report_totals)
{
    write(workplace, "f", "can set-id 1 7 1\ncan set-id 2 7 1\ncan set-id 3 7 1\n");
    const auto interrupted = [&](const std::string& command, int signal) {
        gateway.suspend();
        Tool tool(workplace, "vorcfg", {command, "f", "--trace"});
        std::string text;
        do {
            text = tool.next_line();
        } while (!text.empty() && !text.starts_with("> "));
        tool.signal(signal);
        tool.signal(signal);
        text.clear();
        for (std::string line = tool.next_line(); !line.empty(); line = tool.next_line()) {
            text += line + '\n';
        }
        const int code = tool.stop(SIGTERM);
        gateway.resume();
        return text + std::to_string(code);
    };
    EXPECT_EQ("f:1: can set-id 1: unknown: interrupted, it may or may not have been done\n"
              "vorcfg: interrupted\n"
              "f: stopped at line 1: 1 unknown, 2 not made\n13",
              interrupted("batch", SIGINT));
    EXPECT_EQ("f:1: can set-id 1: unknown: interrupted, it may or may not have been done\n"
              "vorcfg: interrupted\n"
              "f: stopped at line 1: 1 unknown, 2 not made\n13",
              interrupted("apply", SIGHUP));
    EXPECT_EQ("f: 3 accepted\n", workplace.run("vorcfg apply f --retry-unknown | tail -n 1").text);

    // standard output closed or full, and a disk that takes half a record
    EXPECT_EQ("f: stopped: 1 accepted, 2 not made\nvorcfg: standard output: No space left on device\n10\n",
              workplace.run("vorcfg batch f > /dev/full; echo $?").text);
    EXPECT_EQ("f: stopped: 1 accepted, 2 not made\nvorcfg: standard output: Broken pipe\n10\n",
              workplace.run("mkfifo p; (exec 8<>p; exec 7>p; exec 8<&-; vorcfg batch f >&7; echo $? >&2)").text);
    write(workplace, "many",
          "can set-id 1 1 1\ncan set-id 2 1 1\ncan set-id 3 1 1\ncan set-id 4 1 1\n"
          "can set-id 5 1 1\ncan set-id 6 1 1\ncan set-id 7 1 1\n");
    const Output full = workplace.run("trap '' XFSZ; ulimit -f 1; vorcfg apply many 2>&1 | tail -n 2");
    EXPECT_NE(std::string::npos, full.text.find("vorcfg: many.journal: ")) << full.text;
    EXPECT_NE(std::string::npos, full.text.find(" not made")) << full.text;
    for (const Json& record : records(workplace.path() / "many.journal")) {
        EXPECT_TRUE(record.is_object());
    }
}

TEST_F(Site, output_and_journal_hold_no_secret)
{
    const std::vector<std::string> secrets{"gr33n-lit",   "gr33n-file",       "gr33n-var",
                                           "gr33n-konfd", "gr33n-credential", "gr33n-descriptor"};
    write(workplace, "17.key", "gr33n-file\n");
    write(workplace, "sim", "gr33n-credential\n");
    write(workplace, "fd", "gr33n-descriptor\n");
    write(workplace, "vars", "site=17\nkey=gr33n-var\n");
    write(workplace, "f",
          "gateway t${site}\n"
          "gsm set-password 1 gr33n-lit 1\n"
          "ip set-interface-security-params 2 @${site}.key \"Tower ${site}\" 3 1\n"
          "snmp set-v2-trap-server 203.0.113.30 community_name=${key} option=1\n"
          "konfd query --set --line password gr33n-konfd --pattern password --path interface wlan0\n"
          "wifi set-ssid-password t password=\"gr33n-lit\"\n"
          "gsm set-password 2 @cred:sim 1\ngsm set-password 3 @fd:3 1\n");
    // with the waiting process, and a pager that shows what it has
    const std::string at_run = "exec 3<fd; export CREDENTIALS_DIRECTORY=$PWD PAGER='cat; env; cat <&3'; ";
    std::string all = Terminal(workplace, {"/bin/sh", "-c", at_run + "vorcfg help gpio"}).rest().text;
    EXPECT_NE(std::string::npos, all.find("CREDENTIALS_DIRECTORY="));

    for (const char* const command :
         {"check f --vars vars", "plan f --vars vars", "apply f --vars vars --trace", "plan f --vars vars",
          "apply f --vars vars --trace --json --resend-secrets --confirm 60 --yes",
          "plan f --vars vars --json --resend-secrets", "revert t17.journal --trace --json",
          "apply f --vars vars --resend-secrets", "report t17.journal", "report t17.journal --html",
          "report t17.journal --json"}) {
        const Output output = workplace.run(at_run + "vorcfg " + std::string(command));
        EXPECT_TRUE(output.exit_code == 0 || output.exit_code == 11 || output.exit_code == 14) << command << '\n'
                                                                                               << output.text;
        all += output.text;
    }
    all += contents(workplace.path() / "t17.journal");
    EXPECT_NE(std::string::npos, all.find("nothing to make, 7 up to date\n")) << all;
    for (const std::string& secret : secrets) {
        EXPECT_EQ(std::string::npos, all.find(secret)) << secret;
    }
    const Output literal = workplace.run("vorcfg check f --set site=17 --set key=gr33n-var");
    EXPECT_EQ(2, literal.exit_code);
    EXPECT_NE(std::string::npos, literal.text.find("f:4:38: community_name: not accepted on the command line"))
        << literal.text;
}

} // namespace
