// vorcfg at a terminal: completion asked for by the shells themselves, and its own prompt.
#include <csignal>
#include <fstream>

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
TEST_P(Completion, writes_lines_that_are_accepted)
{
    if (!std::filesystem::exists(GetParam().command.front())) {
        GTEST_SKIP() << GetParam().name << " is missing";
    }
    const processes::Workplace workplace;
    processes::Gateway gateway(workplace, {"--strict"});
    std::ofstream(workplace.path() / "tower key") << "gr33n-m0nsoon\n";
    processes::Terminal terminal(workplace, GetParam().command);
    terminal.type(std::string(GetParam().start) + "source <(vorcfg completion " + GetParam().name +
                  "); echo rea''dy\n");
    ASSERT_NE(terminal.shown_until("ready").find("ready"), std::string::npos);
    const std::pair<const char*, const char*> lines[] = {
        {"vorcfg gpi\tset-val\t5 1\n", "gpio set-value: sent to gpiomgr"},
        {"vorcfg ip enable-ip-routing dis\t\n", "ip enable-ip-routing: sent to ethmgr"},
        {"vorcfg gsm set-password 1 @tow\t1\n", "gsm set-password: accepted"},
        {"vorcfg --dry\tlist gp\t\n", "gpio set-value port_num value"},
        {"vorcfg batch --dry-run exam\tsi\t\n", "shown only (dry run)"},
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

} // namespace
