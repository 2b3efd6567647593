// Faults through real processes: the verdict that vorcfg gives on each, and what they must not delay.
#include <csignal>
#include <cstring>
#include <future>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "processes.hpp"

namespace {

using processes::Gateway;
using processes::Output;
using processes::Workplace;

const std::string baudrate = "vorcfg can set-baudrate 1 250000 1";
const std::string query = "vorcfg konfd query --set --line a b --pattern a b";
const std::string impatient = "VORINFRA_TIMEOUT_MS=250 "; // where no answer must come

std::string last_line(const Output& output)
{
    const std::string text = output.text.substr(0, output.text.size() - 1);
    return text.substr(text.rfind('\n') + 1);
}

struct Felt {
    const char* rule;
    std::string command;
    int exit;
    std::string verdict;
};

std::string unread(unsigned message, const char* carried, int code)
{
    return fmt::format("delivered to canmgr, its answer is not what this call reads (message {:#x}, its answer carried "
                       "{}) (code {})",
                       message, carried, code);
}

TEST(faults, verdict_per_fault)
{
    const std::string can = "can set-baudrate 1: ";
    const std::string stored = "konfd query a b: ";
    const char* const nothing_came =
        "unknown: no answer from canmgr in time, it may or may not have been done (code -3)";
    const char* const nothing_came_of_konfd =
        "unknown: no answer from konfd in time, it may or may not have been done (code -1)";
    const Felt table[] = {
        {"canmgr: status 7", baudrate, 1, "refused by canmgr: status 7"},
        {"canmgr: status -7", baudrate, 1, "refused by canmgr: status -7"},
        {"canmgr: id low", baudrate, 5, unread(0x13002, "status 0", -4)},
        {"canmgr: id high", baudrate, 5, unread(0x3003, "status 0", -4)},
        {"canmgr: id 1", baudrate, 5, unread(1, "status 0", -4)},
        {"canmgr: no payload", baudrate, 5, unread(0x13003, "no status", -4)},
        {"canmgr: short 2 bytes", baudrate, 5, unread(0x13003, "no status", -1)},
        {"canmgr: late 20ms", baudrate, 0, "accepted by canmgr"},
        {"canmgr: late 1min", impatient + baudrate, 6, nothing_came},
        {"canmgr: doubled", baudrate, 0, "accepted by canmgr"},
        {"canmgr: swapped", impatient + baudrate, 6, nothing_came},
        {"canmgr: never", impatient + baudrate, 6, nothing_came},
        {"canmgr: refuse", baudrate, 3, "not delivered: exchange refused (code -3)"},
        {"canmgr: die 1ms", impatient + baudrate, 6, nothing_came},
        {"konfd: answer \"-e\"", query, 1, "refused by konfd: answer \"-e\""},
        {"konfd: answer \"+o\"", query, 5, "delivered to konfd, its answer is neither -o nor -e: \"+o\" (code -1)"},
        {"konfd: answer \"-o and more\"", query, 0, "accepted by konfd"},
        {"konfd: split", query, 0, "accepted by konfd"},
        {"konfd: hang up", query, 6, nothing_came_of_konfd},
        {"konfd: never", impatient + query, 6, nothing_came_of_konfd},
    };
    const Workplace place;
    Gateway gateway(place, {"--strict"});
    for (const Felt& felt : table) {
        ASSERT_EQ(0, place.run("vorsim fault add '" + std::string(felt.rule) + "'").exit_code) << felt.rule;
        const Output output = place.run(felt.command + " 2>/dev/null"); // without the hint
        EXPECT_EQ((felt.command.find("konfd") == std::string::npos ? can : stored) + felt.verdict, last_line(output))
            << felt.rule;
        EXPECT_EQ(felt.exit, output.exit_code) << felt.rule;
        EXPECT_NE(std::string::npos, gateway.next_line().find("  [fault ")) << felt.rule;
        place.run("vorsim fault clear");
        const Output after = place.run(felt.command.substr(felt.command.find("vorcfg")));
        EXPECT_EQ(0, after.exit_code) << "after " << felt.rule << ": " << after.text;
        gateway.next_line();
    }
    EXPECT_EQ(0, gateway.stop(SIGTERM)) << "faults do not fail a strict run";
}

// Of a call that never reads its answer, and of one that sends a notice once its request was accepted.
TEST(faults, verdict_beyond_what_the_call_reads)
{
    const struct {
        const char* prepared;
        const char* call;
        int exit;
        const char* verdict;
    } table[] = {
        {"fault add 'serialmgr: status 7'", "serial set-databits 1 8", 1,
         "serial set-databits 1: refused by serialmgr: status 7 (seen in the answer; the call does not read it)"},
        {"fault add 'serialmgr: no payload'", "serial set-databits 1 8", 5,
         "serial set-databits 1: delivered to serialmgr, verdict unread by this call (its answer carried no status)"},
        {"fault add 'serialmgr: id 1'", "serial set-databits 1 8", 5,
         "serial set-databits 1: delivered to serialmgr, its answer is not what this call reads (message 0x1, its "
         "answer carried status 0) (code -4)"},
        {"stop system", "ip set-access-point-params 2 @examples/sim-17.key net 3 91 1", 6,
         "ip set-access-point-params 2: unknown: accepted by ethmgr, but the notice to SAP 0 was not delivered: "
         "nothing listens"},
    };
    const Workplace place;
    const Gateway gateway(place, {});
    for (const auto& felt : table) {
        ASSERT_EQ(0, place.run("vorsim " + std::string(felt.prepared)).exit_code) << felt.prepared;
        const Output output = place.run("vorcfg " + std::string(felt.call));
        EXPECT_EQ(felt.verdict, last_line(output)) << felt.prepared;
        EXPECT_EQ(felt.exit, output.exit_code) << felt.prepared;
        place.run("vorsim fault clear");
    }
    // in a file, what the answer says of a call that does not read it is a success, and nothing else is
    const char* const line = "printf 'serial set-databits 1 8\\n' | vorcfg batch -";
    EXPECT_EQ(0, place.run(line).exit_code);
    place.run("vorsim fault add 'serialmgr: no payload'");
    EXPECT_EQ(5, place.run(line).exit_code);
}

TEST(faults, swapped_waits_for_the_next_answer)
{
    const Workplace place;
    Gateway gateway(place, {"--faults", "/dev/null"});
    place.run("vorsim fault add 'canmgr: swapped, once'");
    auto first = std::async(std::launch::async, [&] { return place.run(baudrate).exit_code; });
    gateway.next_line();
    EXPECT_EQ(std::future_status::timeout, first.wait_for(std::chrono::seconds(0)));
    EXPECT_EQ(0, place.run("vorcfg can set-id 1 5 1").exit_code);
    EXPECT_EQ(0, first.get());
}

TEST(faults, same_seed_same_run)
{
    const auto run = [] {
        const Workplace place;
        const Gateway gateway(place, {"--seed", "5"});
        place.run("vorsim fault add 'canmgr chance 50%: status 7'");
        return place.run("for i in 1 2 3 4 5 6 7 8; do " + baudrate + "; done").text;
    };
    const std::string text = run();
    EXPECT_NE(std::string::npos, text.find("refused"));
    EXPECT_NE(std::string::npos, text.find("accepted"));
    EXPECT_EQ(text, run());
}

// A konfd that answers one client as it is told: the nth answer once n commands have come, in pieces between bars.
class OneTalk {
public:
    OneTalk(const Workplace& place, std::vector<std::string> answers)
        : listening_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        const std::string path = (place.path() / "root/tmp/konfd.socket").string();
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        unlink(path.c_str());
        EXPECT_EQ(0, bind(listening_, reinterpret_cast<const sockaddr*>(&address), sizeof address));
        EXPECT_EQ(0, listen(listening_, 1));
        thread_ = std::thread([this, answers = std::move(answers)] { talk(answers); });
    }
    OneTalk(const OneTalk&) = delete;
    OneTalk& operator=(const OneTalk&) = delete;
    ~OneTalk()
    {
        thread_.join();
        close(listening_);
    }

private:
    void talk(const std::vector<std::string>& answers) const
    {
        const int client = accept(listening_, nullptr, nullptr);
        std::string heard;
        std::size_t commands = 0;
        char bytes[512];
        for (ssize_t size = 0; (size = read(client, bytes, sizeof bytes)) > 0;) {
            heard.append(bytes, static_cast<std::size_t>(size));
            for (std::size_t at = heard.find("-s "); at != heard.npos; at = heard.find("-s ")) {
                heard.erase(0, at + 1);
                answer(client, answers.at(commands++));
            }
        }
        close(client);
    }
    static void answer(int client, const std::string& answer)
    {
        for (std::size_t at = 0, end = 0; at < answer.size(); at = end + 1) {
            end = std::min(answer.find('|', at), answer.size());
            send(client, answer.data() + at, end - at, MSG_NOSIGNAL);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }

    int listening_;
    std::thread thread_;
};

// A call that sends two commands is no better known than the worse of them. One answer may stand for both.
TEST(konfd, verdict_per_answers)
{
    const std::string network = "vorcfg wifi set-ssid-password Tower @examples/sim-17.key";
    const std::string address = "vorcfg konfd set-interface-ip eth1 10.0.0.1";
    const struct {
        std::string command;
        std::vector<std::string> answers;
        int exit;
        std::string verdict;
    } table[] = {
        {query, {"-|o"}, 0, "accepted by konfd"},
        {query, {"-|e\n"}, 1, "refused by konfd: answer \"-e\""},
        {impatient + query, {"-"}, 5, "delivered to konfd, its answer is neither -o nor -e: \"-\" (code -1)"},
        {network, {"", "-o\n"}, 0, "accepted by konfd"},
        {network, {"-o\n", "-o\n"}, 0, "accepted by konfd"},
        {network,
         {"-o\n", "-e\n"},
         6,
         "unknown: the first command to konfd was accepted, the second has the answer \"-e\""},
        {network,
         {"-|o|\n", "-|e"},
         6,
         "unknown: the first command to konfd was accepted, the second has the answer \"-e\""},
        {network,
         {"-e\n", "-o\n"},
         6,
         "unknown: the first command to konfd has the answer \"-e\", the second was accepted"},
        {network, {"-e", "-e"}, 1, "refused by konfd: answer \"-e\""},
        {network,
         {"", "-e\n"},
         6,
         "unknown: konfd refused one of the two commands (answer \"-e\"), the first may have been carried out"},
        {network, {"", "+o"}, 5, "delivered to konfd, its answer is neither -o nor -e: \"+o\" (code -1)"},
        {address,
         {"-o\n", "-e\n"},
         6,
         "unknown: the first command to konfd was accepted, the second has the answer \"-e\""},
        {address, {"-e\n", "-e\n"}, 1, "refused by konfd: answer \"-e\""},
        {impatient + address,
         {"-o\n", ""},
         6,
         "unknown: the first command to konfd was accepted, the second has no answer"},
    };
    const Workplace place;
    for (const auto& [command, answers, exit, verdict] : table) {
        const OneTalk konfd(place, answers);
        const Output output = place.run(command + " 2>/dev/null");
        EXPECT_TRUE(last_line(output).ends_with(": " + verdict)) << last_line(output) << "\nnot " << verdict;
        EXPECT_EQ(exit, output.exit_code) << verdict;
    }
}

TEST(managers, slow_one_delays_no_other)
{
    const Workplace place;
    Gateway gateway(place, {"--delay", "canmgr=1min..2min", "--delay", "ethmgr=1ms..2ms"});
    auto slow =
        std::async(std::launch::async, [&] { return place.run("VORINFRA_TIMEOUT_MS=3000 " + baudrate).exit_code; });
    gateway.next_line();
    EXPECT_EQ(0, place.run("vorcfg ip set-dhcp 0 1").exit_code);
    EXPECT_EQ(0, place.run("vorcfg pcu set-config-enable 1").exit_code);
    EXPECT_EQ(std::future_status::timeout, slow.wait_for(std::chrono::seconds(0)));
    EXPECT_EQ(6, slow.get());
}

} // namespace
