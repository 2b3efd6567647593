// vorcfg at a terminal: completion asked for by the shells themselves, and its own prompt.
#include <csignal>
#include <fstream>
#include <optional>
#include <sstream>

#include <gtest/gtest.h>

#include "processes.hpp"

namespace {

struct Shell {
    const char* name;
    std::vector<std::string> command;
    const char* start;
};

void PrintTo(const Shell& shell, std::ostream* out)
{
    *out << shell.name;
}

class Completion : public testing::TestWithParam<Shell> {};

// Each line is typed, with tabs, and taken by the gateway as completed.
TEST_P(Completion, completed_lines_are_accepted)
{
    if (!std::filesystem::exists(GetParam().command.front())) {
        GTEST_SKIP() << GetParam().name << " is missing";
    }
    const processes::Workplace workplace;
    processes::Gateway gateway(workplace, {"--strict"});
    std::ofstream(workplace.path() / "tower key") << "gr33n-m0nsoon\n";
    processes::Terminal terminal(workplace, GetParam().command);
    terminal.type(std::string(GetParam().start) + "export CREDENTIALS_DIRECTORY=.; source <(vorcfg completion " +
                  GetParam().name + "); echo rea''dy\n");
    ASSERT_NE(terminal.shown_until("ready").find("ready"), std::string::npos);
    const std::pair<const char*, const char*> lines[] = {
        {"vorcfg gpi\tset-val\t5 1\n", "gpio set-value 5: sent to gpiomgr"},
        {"vorcfg ip enable-ip-routing dis\t\n", "Make this call? [y/N] "},
        {"y\n", "ip enable-ip-routing: sent to ethmgr"},
        {"vorcfg gsm set-password 1 @tow\t1\n", "gsm set-password 1: accepted"},
        {"vorcfg gsm set-password 2 @cred:to\t1\n", "gsm set-password 2: accepted"},
        {"vorcfg gsm set-password 3 @fd\t3 1 3<'tower key'\n", "gsm set-password 3: accepted"},
        {"vorcfg --tra\tlist gp\t\n", "gpio set-value PORT_NUM VALUE"},
        {"vorcfg batch --dry-run exam\tsit\t\n", "not sent (dry run)"},
        {"vorcfg check examples/tower.c\t--vars examples/towers.c\t--row sit\t17\n", "11 calls, no errors"},
    };
    for (const auto& [line, wanted] : lines) {
        terminal.type(line);
        const std::string shown = terminal.shown_until(wanted);
        EXPECT_NE(shown.find(wanted), std::string::npos) << line << shown;
    }
    EXPECT_EQ(gateway.stop(SIGTERM), 0);
}

INSTANTIATE_TEST_SUITE_P(
    shells, Completion,
    testing::Values(Shell{"bash", {"/bin/bash", "--norc", "--noprofile", "-i"}, ""},
                    Shell{"zsh", {"/bin/zsh", "-f", "-i"}, "autoload -U compinit; compinit -u -D; "}),
    [](const auto& each) { return each.param.name; });

constexpr char up[] = "\x1b[A";
constexpr char ctrl_c[] = "\x03";
constexpr char ctrl_d[] = "\x04";
constexpr char ready[] = "vorcfg> ";

class Prompt : public testing::Test {
protected:
    // What one line brings, up to the next prompt.
    std::string typed(const std::string& line) const
    {
        terminal_->type(line);
        return terminal_->shown_until(ready);
    }
    void begin()
    {
        terminal_.emplace(workplace_, std::vector<std::string>{workplace_.path() / "bin/vorcfg"});
        terminal_->shown_until(ready);
    }
    void end()
    {
        terminal_->type(ctrl_d);
        EXPECT_EQ(terminal_->rest().exit_code, 0);
    }

    const processes::Workplace workplace_;
    mutable std::optional<processes::Terminal> terminal_;
};

TEST_F(Prompt, asks_before_a_disconnecting_call)
{
    processes::Gateway gateway(workplace_, {"--strict"});
    begin();
    for (const std::string no : {"n\n", "\n", ctrl_c}) {
        terminal_->type("ip set-dhcp 0 1\n");
        terminal_->shown_until("Make this call? [y/N] ");
        EXPECT_NE(typed(no).find("othing was sent"), std::string::npos);
    }
    terminal_->type("ip set-dhcp 1 1\n");
    terminal_->shown_until("Make this call? [y/N] ");
    EXPECT_NE(typed("y\n").find("ip set-dhcp 1: accepted by ethmgr"), std::string::npos);
    EXPECT_NE(typed("ip set-dhcp 2 1 --yes\n").find("ip set-dhcp 2: accepted by ethmgr"), std::string::npos);
    end();
    EXPECT_NE(gateway.next_line().find("interface 1"), std::string::npos) << "sent without a yes";
}

TEST_F(Prompt, continues_after_interrupt_and_error)
{
    begin();
    EXPECT_EQ(typed(std::string("gpio set-value 5 1") + ctrl_c).find("not delivered"), std::string::npos);
    EXPECT_NE(typed("gpio set-value 5\n").find("vorcfg: "), std::string::npos);
    EXPECT_NE(typed("help gpio\n").find("set-value"), std::string::npos);
    end();
}

// In the order of the file, also if they are typed ahead.
TEST_F(Prompt, asks_for_each_secret_without_echo)
{
    processes::Gateway gateway(workplace_, {"--show-secrets"});
    std::ofstream(workplace_.path() / "f")
        << "gateway t\ngsm set-password 1 ? 1\ngsm set-password 2 - 1\ngsm set-password 3 password=? option=1\n";
    begin();
    for (const std::string command : {"batch f\n", "apply f --yes\n", "apply f --resend-secrets --yes\n"}) {
        terminal_->type(command);
        EXPECT_NE(terminal_->shown_until("password: ").find("f:2: gsm set-password: "), std::string::npos);
        const std::string shown = typed("gr33n-1\ngr33n-2\ngr33n-3\n");
        EXPECT_LT(shown.find("f:3: gsm set-password: password: "), shown.find("f:4: gsm set-password: password: "));
        EXPECT_EQ(shown.find("gr33n"), std::string::npos) << shown;
        for (const char port : {'1', '2', '3'}) {
            EXPECT_NE(gateway.next_line().find(std::string("port ") + port + ": password=\"gr33n-" + port),
                      std::string::npos)
                << command << shown;
        }
    }
    EXPECT_EQ(typed("plan f\n").find("password: "), std::string::npos);
    terminal_->type("gsm set-password 4 - 1\n");
    terminal_->shown_until("gsm set-password: password: ");
    EXPECT_NE(typed(ctrl_c).find("nothing was sent"), std::string::npos);
    end();
}

TEST(help, pager_at_a_terminal_only)
{
    const processes::Workplace workplace;
    const auto shown = [&](const std::string& command) {
        return processes::Terminal(workplace, {"/bin/sh", "-c", command}).rest().text;
    };
    const std::string help = "vorcfg help gpio set-value";
    EXPECT_EQ(shown("PAGER='head -n 1' " + help), "usage: vorcfg gpio set-value PORT_NUM VALUE\r\n");
    EXPECT_NE(shown("PAGER=no-such-program " + help).find("Example: "), std::string::npos);
    EXPECT_EQ(workplace.run("PAGER='head -n 1' " + help).text, workplace.run(help).text);
    const std::string without_man =
        R"(for tool in man mandoc; do printf '#!/bin/sh\nexit 127\n' >bin/$tool; chmod +x bin/$tool; done; )";
    for (const std::string& page :
         {std::string("PAGER=cat MANPAGER=cat vorcfg manual"), without_man + "PAGER=cat vorcfg manual"}) {
        EXPECT_NE(shown(page + " vorcfg-batch").find("files of calls for vorcfg"), std::string::npos) << page;
        EXPECT_EQ(shown(page + " vorcfg-batch").find(".Sh"), std::string::npos) << page;
    }
}

#ifdef VOR_EDITED
TEST_F(Prompt, completion)
{
    begin();
    EXPECT_NE(typed("gpi\tset-v\t5 1 --dry\t\n").find("gpio set-value 5: dry run"), std::string::npos);
    EXPECT_NE(typed("gpio set\t\t").find("set-config-interrupt"), std::string::npos);
    terminal_->type(ctrl_c);
    terminal_->shown_until(ready);
    end();
}

TEST_F(Prompt, history_omits_secrets)
{
    begin();
    typed("gpio set-value 5 1 --dry-run\n");
    for (const char* const line :
         {"gsm set-password 1 gr33n 1", "gsm set-pasword 1 gr33n 1", "gms set-password 1 gr33n 1",
          "wifi set-ssid-password gr33n \"", "konfd query --set --line password gr33n --pattern password"}) {
        typed(std::string(line) + " --dry-run\n");
    }
    end();
    const auto file = workplace_.path() / "state/vorcfg/history";
    EXPECT_EQ(processes::contents(file), "gpio set-value 5 1 --dry-run\n");
    EXPECT_EQ(std::filesystem::status(file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    begin();
    EXPECT_NE(typed(std::string(up) + "\n").find("gpio set-value 5: dry run"), std::string::npos);
    end();
}
#endif

#ifdef VOR_MANUAL
// Pages refer to each other; where they are not installed, they are not found.
TEST(manual, lints_and_lists_every_command)
{
    if (!std::filesystem::exists("/usr/bin/mandoc")) {
        GTEST_SKIP() << "mandoc is missing";
    }
    const processes::Workplace workplace;
    const std::string pages = "'" VOR_MANUAL "'/man?/*.?";
    EXPECT_EQ(workplace.run("mandoc -T lint " + pages + " | grep -v 'referenced manual not found: Xr vor'").text, "");
    EXPECT_EQ(workplace.run("ls " + pages + " | wc -l").text, workplace.run("vorcfg manual | wc -l").text);
    const auto shown = [&](const std::string& page) {
        return workplace.run("vorcfg manual " + page + " | mandoc -T ascii | sed 's/.\b//g'").text;
    };
    EXPECT_NE(shown("vorcfg-gsm.1").find("vorcfg gsm set-password GSM_PORT PASSWORD OPTION"), std::string::npos);
    // written by hand
    EXPECT_EQ(workplace.run("vorcfg manual vorcfg-batch.5 | sed '1,/^.Bd/d; /^.Ed/,$d' | vorcfg check -").exit_code, 0);
    std::istringstream names(workplace
                                 .run("vorsim --help | grep -oE '^  (--[a-z-]+|[a-z]+( (add|list|clear))?)' | "
                                      "sed 's/^ *//'")
                                 .text);
    ASSERT_FALSE(names.str().empty());
    const std::string vorsim = shown("vorsim.1");
    for (std::string name; std::getline(names, name);) {
        EXPECT_NE(vorsim.find("\n     " + name), std::string::npos) << name;
    }
}
#endif

} // namespace
