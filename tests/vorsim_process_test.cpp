// vorsim as a process: its sockets, its clients, its end.
#include <algorithm>
#include <csignal>
#include <cstring>
#include <sstream>

#include <sys/wait.h>

#include <nlohmann/json.hpp>

#include "platform_fixture.hpp"
#include "process/unix_socket.hpp"

namespace {

using processes::contents;
using processes::Gateway;
using processes::Output;
using processes::Workplace;

// The test itself is the front end.
class Vorsim : public testing::Test {
protected:
    Vorsim() { place.enter(); }

    std::string konfd_path() const { return (place.path() / "root/tmp/konfd.socket").string(); }

    Workplace place;
};

// Asks for a record by a request without payload; the first word of the answer.
int ask(VOR_IPC_HANDLE* front_end, vor_uint16 sap, vor_uint32 id)
{
    Message request;
    Message response;
    int word = -1;
    if (vor_ipc_request_response(front_end, sap, id, &request.ref, &response.ref, 0, 0) == 0) {
        std::memcpy(&word, response.payload(), sizeof word);
    }
    return word;
}

class KonfdClient {
public:
    explicit KonfdClient(const std::string& path) : socket_(vorsim::connect_to(path))
    {
        EXPECT_GE(socket_.get(), 0) << path;
    }

    void send(const std::string& bytes) { EXPECT_TRUE(vorsim::send_now(socket_.get(), bytes)); }
    // One answer; empty when the connection ends or nothing comes.
    std::string receive()
    {
        pollfd waiting{socket_.get(), POLLIN, 0};
        char answer[50];
        const ssize_t size = poll(&waiting, 1, 20'000) == 1 ? recv(socket_.get(), answer, sizeof answer, 0) : 0;
        return {answer, static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
    }
    void send_no_more() { shutdown(socket_.get(), SHUT_WR); }

private:
    vorsim::Descriptor socket_;
};

TEST_F(Vorsim, is_ready_shows_its_state_and_leaves_nothing_behind)
{
    const std::string journal = (place.path() / "journal").string();
    const std::string state = (place.path() / "state").string();
    for (const int signal_number : {SIGTERM, SIGINT}) {
        Gateway gateway(place, {"--journal", journal, "--state", state});
        EXPECT_EQ(0, ask(Bound(client_sap), 2, 0x2021));
        EXPECT_EQ(0U, gateway.next_line().find("platmgr(2) 0x2021 vor_cfg_get_system_temperature  board -> status=0"));
        KonfdClient client(konfd_path());
        client.send("-s -l \"password hunter2\" \"interface wlan0\"\n");
        EXPECT_EQ("-o\n", client.receive());

        EXPECT_EQ("vorsim: 1 message, 0 complaints\nkonfd\n  interface wlan0\n    password ********\n",
                  place.run("vorsim show").text);
        const auto shown = nlohmann::json::parse(place.run("vorsim show --json").text);
        EXPECT_EQ(1, shown["schema"]);
        EXPECT_EQ(0, gateway.stop(signal_number));
        EXPECT_TRUE(std::filesystem::is_empty(place.path() / "run"));
        EXPECT_FALSE(std::filesystem::exists(konfd_path()));
        EXPECT_EQ(shown, nlohmann::json::parse(contents(state)));
    }
    std::istringstream records(contents(journal));
    std::string record;
    ASSERT_TRUE(std::getline(records, record));
    EXPECT_EQ(2, nlohmann::json::parse(record)["journal"]);
    ASSERT_TRUE(std::getline(records, record));
    EXPECT_EQ("vor_cfg_get_system_temperature", nlohmann::json::parse(record)["call"]);
    ASSERT_TRUE(std::getline(records, record));
    EXPECT_EQ("-s -l \"password ********\" \"interface wlan0\"", nlohmann::json::parse(record)["konfd"]);
    EXPECT_EQ(std::string::npos, contents(journal).find("hunter2"));
}

TEST_F(Vorsim, fails_a_strict_run_that_had_complaints)
{
    Gateway gateway(place, {"--strict", "--sap", "77"});
    EXPECT_EQ(2, ask(Bound(client_sap), 77, 0x4d001));
    EXPECT_EQ("strict: sap(77) 0x4d001: no such message -> status 2", gateway.next_line());
    EXPECT_EQ(3, gateway.stop(SIGTERM));
}

TEST_F(Vorsim, says_what_it_cannot_do)
{
    const std::tuple<const char*, int, const char*> table[] = {
        {"vorsim --frob", 2, "unknown option \"--frob\""},
        {"vorsim --sap 65536", 2, "--sap is \"65536\": must be a number from 0 to 65535"},
        {"vorsim --seed", 2, "--seed needs a value"},
        {"vorsim show --strict", 2, "show takes --json and one MANAGER[/OBJECT]"},
        {"VORINFRA_DIR=relative vorsim", 2, "must be an absolute path"},
        {"VORINFRA_ROOT=relative vorsim", 2, "must be an absolute path"},
        {"vorsim show", 1, "no vorsim runs in"},
        {"vorsim --journal /nowhere/journal", 2, "cannot write the journal /nowhere/journal"},
        {"vorsim --state /nowhere/state", 2, "cannot write the state /nowhere/state"},
        {"vorsim --help", 0, "exit codes:"},
    };
    for (const auto& [command, code, message] : table) {
        const Output output = place.run(command);
        EXPECT_EQ(code, output.exit_code) << command;
        EXPECT_NE(std::string::npos, output.text.find(message)) << command << ": " << output.text;
    }
    Gateway gateway(place, {});
    const Output second = place.run("vorsim");
    EXPECT_EQ(2, second.exit_code);
    EXPECT_NE(std::string::npos, second.text.find("another vorsim runs in")) << second.text;
    EXPECT_EQ(0, ask(Bound(client_sap), 2, 0x2021)) << "the first is not disturbed";
}

TEST_F(Vorsim, takes_the_sockets_of_a_dead_one_over)
{
    {
        Gateway gateway(place, {});
        EXPECT_EQ(128 + SIGKILL, gateway.stop(SIGKILL));
    }
    ASSERT_TRUE(std::filesystem::exists(konfd_path()));
    const Gateway gateway(place, {});
    EXPECT_EQ(0, ask(Bound(client_sap), 2, 0x2021));
    KonfdClient(konfd_path()).send("-d\n");
}

TEST_F(Vorsim, outlives_its_clients)
{
    Gateway gateway(place, {});

    const pid_t child = fork();
    if (child == 0) {
        const Bound busy(201);
        while (true) {
            ask(busy, 2, 0x2021);
        }
    }
    gateway.next_line();
    kill(child, SIGKILL); // in the middle of whatever it is asking
    waitpid(child, nullptr, 0);
    {
        KonfdClient gone(konfd_path());
        gone.send("-s -l \"a\"\n-s -l \"b\"\n"); // and never reads
    }
    KonfdClient endless(konfd_path());
    endless.send(std::string(60'000, 'x'));
    KonfdClient half(konfd_path());
    half.send("-s -l \"half");
    KonfdClient other(konfd_path());
    other.send(std::string("-c -r \"^b$\"\0   ", 15));
    EXPECT_EQ("-o\n", other.receive());
    half.send(" a line\"");
    half.send_no_more();
    EXPECT_EQ("-o\n", half.receive());
    EXPECT_EQ("", half.receive());
    EXPECT_EQ("-e\n", endless.receive());
    other.send("-c -r \"^half a line$\"\n");
    EXPECT_EQ("-o\n", other.receive());
    EXPECT_EQ(0, ask(Bound(client_sap), 2, 0x2021));
    EXPECT_EQ(0, gateway.stop(SIGTERM));
}

} // namespace
