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
        EXPECT_EQ(0U, gateway.next_line().find("answered   platmgr  vor_cfg_get_system_temperature  board: status=0"));
        const Stream client(konfd_path);
        client.send("-s -l \"interface wlan0\" -s -l \"password hunter2\" \"interface wlan0\"\n");
        EXPECT_EQ("-o\n", client.line());

        EXPECT_EQ("vorsim: 1 message\nkonfd\n  interface wlan0\n    password ********\n",
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
    EXPECT_EQ("REFUSED 2  sap 77  0x4d001  unknown message id", gateway.next_line());
    EXPECT_EQ(3, gateway.stop(SIGTERM));
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

// Each command has a gateway of its own, which nothing outlives.
TEST_F(Vorsim, runs_beside_others_and_leaves_nothing)
{
    EXPECT_EQ("0\n0\n0\n1\n", place
                                  .run("mkdir -m 700 own; export TMPDIR=$PWD/own; "
                                       "echo 'platmgr  *  *  x2' >two; "
                                       "for n in 2 2 2 1; do { vorsim run --expect two -- sh -c "
                                       "'for i in $(seq '$n'); do vorcfg env get-system-temperature; done' "
                                       ">/dev/null 2>&1; echo $?; } & done | sort")
                                  .text);
    EXPECT_EQ("gone\n", place
                            .run("export TMPDIR=$PWD/own; vorsim run -- sh -c 'ls own; exec sleep 2' >begun & "
                                 "until [ -s begun ]; do :; done; kill -9 $!; "
                                 "until [ -z \"$(ls own)\" ]; do :; done; echo gone")
                            .text);
    EXPECT_EQ("", place.run("ls own").text);
}

// A terminal interrupts the command itself; a signal to vorsim alone is passed on.
TEST_F(Vorsim, run_passes_a_signal_on_once)
{
    processes::Terminal terminal(place, {"/bin/sh", "-c",
                                         "exec vorsim run -- sh -c 'trap \"echo told\" INT; trap \"exit 9\" TERM; "
                                         "echo run by $PPID.; while :; do sleep 0.01; done'"});
    terminal.shown_until("run by ");
    const pid_t run = std::stoi(terminal.shown_until("."));
    terminal.type("\x03");
    terminal.shown_until("told");
    kill(run, SIGTERM);
    const processes::Output output = terminal.rest();
    EXPECT_EQ(std::string::npos, output.text.find("told")) << output.text;
    EXPECT_EQ(9, output.exit_code);
    EXPECT_EQ("143\n", place
                           .run("echo 'mqttmgr  *  *' >one; vorsim run --expect one --within 1min -- touch done & "
                                "until [ -e done ]; do :; done; sleep 0.2; kill $!; wait $!; echo $?")
                           .text);
}

} // namespace
