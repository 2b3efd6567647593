// vorsim as a process: its sockets, its clients, its end.
#include <csignal>

#include <sys/wait.h>

#include "gateway_fixture.hpp"

namespace {

using processes::Gateway;

class Vorsim : public GatewayTest {};

TEST_F(Vorsim, shows_state_and_cleans_up)
{
    for (const int signal_number : {SIGTERM, SIGINT}) {
        Gateway gateway(place, {"--journal", "journal", "--state", "state"});
        EXPECT_EQ(0, ask(Bound(client_sap)));
        EXPECT_EQ(0U, gateway.next_line().find("platmgr(2) 0x2021 vor_cfg_get_system_temperature  board -> status=0"));
        const Stream client(konfd_path);
        client.send("-s -l \"interface wlan0\" -s -l \"password hunter2\" \"interface wlan0\"\n");
        EXPECT_EQ("-o\n", client.line());

        EXPECT_EQ("vorsim: 1 message, 0 complaints\nkonfd\n  interface wlan0\n    password ********\n",
                  place.run("vorsim show").text);
        const auto last = state();
        EXPECT_EQ(1, last["schema"]);
        EXPECT_EQ(0, gateway.stop(signal_number));
        EXPECT_TRUE(fs::is_empty(in_place("run")));
        EXPECT_FALSE(fs::exists(konfd_path));
        EXPECT_EQ(last, vor::Json::parse(held("state")));
    }
    EXPECT_TRUE(contains(held("journal"), R"("konfd":"-s -l \"interface wlan0\" | -s -l \"password ********\")"));
    EXPECT_FALSE(contains(held("journal"), "hunter2"));
}

TEST_F(Vorsim, strict_run_with_complaints_fails)
{
    Gateway gateway(place, {"--strict", "--sap", "77"});
    EXPECT_EQ(2, ask(Bound(client_sap), 77, 0x4d001));
    EXPECT_EQ("strict: sap(77) 0x4d001: no such message -> status 2", gateway.next_line());
    EXPECT_EQ(3, gateway.stop(SIGTERM));
}

TEST_F(Vorsim, usage_errors)
{
    expect_said(
        place,
        {{"vorsim --frob", 2, "unknown option \"--frob\""},
         {"vorsim --sap 65536", 2, "--sap is \"65536\": must be a number from 0 to 65535"},
         {"vorsim --seed", 2, "--seed needs a value"},
         {"vorsim show --strict", 2, "show takes --json and one MANAGER[/OBJECT]"},
         {"VORINFRA_DIR=relative vorsim", 2, "must be an absolute path"},
         {"VORINFRA_ROOT=relative vorsim", 2, "must be an absolute path"},
         {"vorsim show", 1, "no vorsim runs in"},
         {"vorsim --journal /nowhere/journal", 2, "cannot write the journal /nowhere/journal"},
         {"vorsim --state /nowhere/state", 2, "cannot write the state /nowhere/state"},
         {"vorsim --help", 0, "exit codes:"},
         {"vorsim fault add canmgr: stat 7", 2, "vorsim: fault add: column 9 of the rule: \"stat\"; expected one of"},
         {"vorsim fault remove 1", 2, "vorsim: expected fault add RULE, fault list or fault clear [N]"},
         {"vorsim fault clear one", 2, "vorsim: expected fault add RULE"},
         {"vorsim stop", 2, "vorsim: stop takes a manager's name or its SAP, not \"\""},
         {"vorsim set temperature 40000", 2, "vorsim: set: temperature is \"40000\": a number from -32768 to 32767"},
         {"vorsim set temperatur 400", 2, "vorsim: set: no reading \"temperatur\"; is it temperature?"},
         {"vorsim set counting 0", 2, "vorsim: set: counting is \"0\": how many times as fast is expected"},
         {"vorsim --delay canmgr=9", 2, "--delay is \"canmgr=9\": expected such as ethmgr=20ms..80ms"},
         {"vorsim --delay canmgr=9ms..8ms", 2, "expected such as"},
         {"vorsim --without nobody", 2, "--without takes a manager's name or its SAP, not \"nobody\""},
         {"echo canmgr: stat 7 > f; vorsim --faults f", 2, "f:1:9: \"stat\"; expected one of"},
         {"vorsim --faults nowhere", 2, "nowhere: cannot be read: No such file or directory"}});
    const Gateway gateway(place, {});
    expect_said(place, {{"vorsim fault clear 9", 1, "vorsim: not done: there is no fault 9\n"},
                        {"vorsim", 2, "another vorsim runs in"}});
    EXPECT_EQ(0, ask(Bound(client_sap))) << "the first is not disturbed";
}

TEST_F(Vorsim, sockets_of_a_dead_process_are_reused)
{
    {
        Gateway gateway(place, {});
        EXPECT_EQ(128 + SIGKILL, gateway.stop(SIGKILL));
    }
    ASSERT_TRUE(fs::exists(konfd_path));
    const Gateway gateway(place, {});
    EXPECT_EQ(0, ask(Bound(client_sap)));
    Stream(konfd_path).send("-d\n");
}

TEST_F(Vorsim, doubled_answers_twice)
{
    const Gateway gateway(place, {});
    place.run("vorsim fault add 'any: doubled'");
    const Bound front_end(client_sap);
    EXPECT_EQ(0, ask(front_end));
    pollfd again{vorinfra_descriptor(front_end), POLLIN, 0};
    EXPECT_EQ(1, poll(&again, 1, 10'000));
}

TEST_F(Vorsim, late_second_half_gets_no_second_answer)
{
    const Gateway gateway(place, {"--lenient-konfd"});
    const Stream client(konfd_path);
    client.send("-s -l \"a\"");
    pollfd answered{client.get(), POLLIN, 0};
    ASSERT_EQ(1, poll(&answered, 1, 10'000)); // and unread
    client.send("-s -l \"b\"");
    place.run("until vorsim show | grep -q '^  b'; do :; done"); // it is carried out
    EXPECT_EQ("-o\n", client.line());
    client.send_no_more();
    EXPECT_EQ("", client.line());
}

TEST_F(Vorsim, survives_its_clients)
{
    Gateway gateway(place, {});

    const pid_t child = fork();
    if (child == 0) {
        const Bound busy(201);
        while (true) {
            ask(busy);
        }
    }
    gateway.next_line();
    kill(child, SIGKILL); // in the middle of whatever it is asking
    waitpid(child, nullptr, 0);
    {
        const Stream gone(konfd_path);
        gone.send("-s -l \"a\"\n-s -l \"b\"\n"); // and never reads
    }
    const Stream endless(konfd_path);
    endless.send(std::string(60'000, 'x'));
    const Stream half(konfd_path);
    half.send("-s -l \"half");
    const Stream other(konfd_path);
    other.send(std::string("-c -r \"^b$\"\0   ", 15));
    EXPECT_EQ("-o\n", other.line());
    half.send(" a line\"");
    half.send_no_more();
    EXPECT_EQ("-o\n", half.line());
    EXPECT_EQ("", half.line());
    EXPECT_EQ("-e\n", endless.line());
    other.send("-c -r \"^half a line$\"\n");
    EXPECT_EQ("-o\n", other.line());
    EXPECT_EQ(0, ask(Bound(client_sap)));
    EXPECT_EQ(0, gateway.stop(SIGTERM));
}

} // namespace
