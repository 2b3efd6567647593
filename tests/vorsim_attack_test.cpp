// What was tried against vorsim: it stays small, and an honest client is served.
#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <thread>

#include <sys/file.h>
#include <sys/wait.h>

#include "text/json.hpp"

#include "gateway/gateway.hpp"
#include "gateway_fixture.hpp"
#include "konfd/konfd.hpp"
#include "tables/names.hpp"

namespace {

using processes::Gateway;

#if defined(__SANITIZE_ADDRESS__)
constexpr long most_growth_kb = 400'000; // what is freed is kept by the sanitizer
#else
constexpr long most_growth_kb = 60'000;
#endif

class Attack : public GatewayTest {
protected:
    Attack() { setenv("VORINFRA_TIMEOUT_MS", "30000", 1); } // waits are counted in answers
};

// The most memory that the process ever had, in kilobytes.
long peak_of(pid_t pid)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string word; status >> word;) {
        if (word == "VmHWM:") {
            long kilobytes = 0;
            status >> kilobytes;
            return kilobytes;
        }
    }
    return 0;
}

// The processor time that the process took, in ticks.
long ticks_of(pid_t pid)
{
    std::istringstream text(processes::contents("/proc/" + std::to_string(pid) + "/stat"));
    std::string word;
    for (int field = 1; field < 14; ++field) {
        text >> word;
    }
    long user = 0;
    long system = 0;
    text >> user >> system;
    return user + system;
}

// Commands for konfd whose naive evaluation takes gigabytes, or half a minute each.
std::vector<std::string> hostile_texts()
{
    std::vector<std::string> texts;
    for (const std::string& pattern : std::initializer_list<std::string>{
             "(\\ba?\\b){60}z", "(\\ba?\\b){150}z", "((a{99}){99}){99}", "(((a{0}){99}){99}){99}", "((((a*)*)*)*)*b",
             "(a|b|ab)*(a|b|ab)*(a|b|ab)*c", "(a*)\\1", std::string(60, '(') + "a" + std::string(60, ')')}) {
        texts.push_back("-c -r \"" + pattern + "\"");
    }
    std::string patterns;
    for (int pattern = 0; pattern < 60; ++pattern) {
        patterns += "-u -r \"(.*a){30}(.*b){30}(.*c){30}z\" \"a\"";
    }
    texts.push_back(patterns);
    std::string shows;
    for (int show = 0; show < 1000; ++show) {
        shows += "-d\"a\"";
    }
    texts.push_back(shows);
    return texts;
}

TEST(limits, hostile_texts_take_bounded_work)
{
    vorsim::konfd::Konfd konfd({.lenient = true});
    for (int line = 0; line < 500; ++line) {
        konfd.execute("-s -l \"" + std::string(900, 'a') + std::to_string(line) + "\" \"a\"");
    }
    const std::string before = konfd.text();
    for (const std::string& text : hostile_texts()) {
        EXPECT_EQ("-e\n", konfd.execute(text).answer) << text.substr(0, 60);
    }
    EXPECT_EQ(before, konfd.text());
    EXPECT_EQ("matching the patterns takes too long",
              konfd.execute("-u -r \"(.*a){30}(.*b){30}z\" \"a\"").record.complaint);
    EXPECT_EQ("-o\n", konfd.execute("-u -r \"^a+7$\" \"a\"").answer) << "an honest pattern over all lines";
    // What is shown is shown whole, or refused.
    EXPECT_GT(konfd.execute("-d \"a\"").answer.size(), 400'000U);
    const vorsim::konfd::Reply twice = konfd.execute("-d \"a\" -d \"a\" -d \"a\"");
    EXPECT_EQ("-e\n", twice.answer);
    EXPECT_EQ("output longer than 1048576 bytes", twice.record.complaint);

    vorsim::tables::Selection rows;
    EXPECT_THROW(rows.object("sensor " + std::string(10'000'000, 'x')), vorsim::tables::NameError);
}

TEST_F(Attack, hostile_texts_and_unread_answers_take_bounded_memory)
{
    Gateway gateway(place, {"--lenient-konfd"});
    const long before = peak_of(gateway.pid());
    const Stream honest(konfd_path);
    for (int line = 0; line < 500; ++line) {
        honest.send("-s -l \"" + std::string(900, 'a') + std::to_string(line) + "\" \"a\"\n");
        ASSERT_EQ("-o\n", honest.line());
    }
    std::vector<Stream> attackers;
    for (int attacker = 0; attacker < 20; ++attacker) {
        attackers.emplace_back(konfd_path);
        for (const std::string& text : hostile_texts()) {
            attackers.back().send(text + "\n");
        }
        attackers.back().send("-d\n-d\n-d\n-d\n"); // half a megabyte each, never read
    }
    const Bound front_end(client_sap);
    for (int question = 0; question < 20; ++question) {
        EXPECT_EQ(0, ask(front_end));
        honest.send("-c -l \"a\"\n");
        EXPECT_EQ("-o\n", honest.line());
    }
    EXPECT_LT(peak_of(gateway.pid()) - before, most_growth_kb);
    EXPECT_EQ(0, gateway.stop(SIGTERM));
}

// The most answers that others had between a client's sending and its answer,
// by the gateway's own times.
std::size_t longest_wait(const std::string& journal, unsigned source)
{
    struct Served {
        std::string arrived;
        unsigned source;
    };
    std::vector<Served> all;
    std::istringstream lines(journal);
    std::size_t longest = 0;
    for (std::string line; std::getline(lines, line);) {
        const auto record = vor::Json::parse(line);
        if (!record.contains("seq")) {
            continue;
        }
        all.push_back({record["time"].string(), record.value("source", 0U)});
        if (all.back().source != source) {
            continue;
        }
        // Those before it in the journal that came in after it overtook it.
        std::size_t overtaken = 0;
        for (auto other = all.rbegin() + 1; other != all.rend() && overtaken < 1000; ++other) {
            if (other->arrived <= all.back().arrived) {
                break;
            }
            ++overtaken;
        }
        longest = std::max(longest, overtaken);
    }
    return longest;
}

TEST_F(Attack, honest_client_is_served_among_six_floods)
{
    Gateway gateway(place, {"--journal", "journal"});
    std::vector<pid_t> floods;
    for (vor_uint16 flood = 0; flood < 6; ++flood) {
        const pid_t child = fork();
        if (child == 0) {
            const Bound busy(static_cast<vor_uint16>(210 + flood));
            const Stream talker(konfd_path);
            std::string texts;
            for (int text = 0; text < 300; ++text) {
                texts += "-d\"x\"\n";
            }
            while (true) {
                send(talker.get(), texts.data(), texts.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
                for (int one_way = 0; one_way < 20; ++one_way) {
                    Message message;
                    vor_ipc_send(busy, static_cast<vor_uint16>(flood % 2 == 0 ? 10 : 2), 0xa00a, &message.ref, 0, 0);
                }
                ask(busy);
            }
        }
        floods.push_back(child);
    }
    {
        const Bound honest(client_sap);
        std::thread reader([&gateway] {
            while (!gateway.next_line().empty()) {}
        });
        for (int question = 0; question < 200; ++question) {
            EXPECT_EQ(0, ask(honest));
        }
        for (const pid_t flood : floods) {
            kill(flood, SIGKILL);
            waitpid(flood, nullptr, 0);
        }
        EXPECT_EQ(0, place.run("vorsim quit").exit_code);
        reader.join();
    }
    EXPECT_LE(longest_wait(held("journal"), client_sap), 8U);
}

TEST_F(Attack, unread_output_blocks_nothing)
{
    Gateway gateway(place, {});
    const Bound front_end(client_sap);
    for (int question = 0; question < 3000; ++question) { // far more than a pipe holds
        ASSERT_EQ(0, ask(front_end));
    }
    EXPECT_TRUE(contains(place.run("vorsim show").text, " lines dropped\n"));
    std::string said;
    for (std::string line = gateway.next_line(); said.empty(); line = gateway.next_line()) {
        said = line.find(" dropped: output not read") != line.npos ? line : "";
        ASSERT_EQ(0, ask(front_end));
    }
    EXPECT_EQ(0U, said.find("vorsim: ")) << said;
    EXPECT_EQ(0, gateway.stop(SIGTERM)) << "nor is it deaf";
}

TEST_F(Attack, slow_clients_leave_room_for_others)
{
    const Gateway gateway(place, {});
    std::vector<Stream> slow;
    for (int client = 0; client < 80; ++client) {
        slow.emplace_back(client < 64 ? konfd_path : in_place("run/vorsim.control"));
    }
    std::jthread drip([&slow](const std::stop_token& stop) {
        for (std::size_t next = 0; !stop.stop_requested(); next = (next + 1) % slow.size()) {
            slow[next].send("x");
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    const Stream honest(konfd_path);
    honest.send("-d\n");
    EXPECT_EQ("-o\n", honest.line());
    EXPECT_EQ(0, place.run("vorsim show").exit_code);
}

TEST_F(Attack, work_of_a_client_that_is_gone_is_stopped)
{
    const Gateway gateway(place, {});
    const auto load = [](const Stream& client, int ports, const std::string& end) {
        std::string lines = "load state\n";
        for (int port = 0; port < ports; ++port) {
            const std::string number = std::to_string(port);
            lines += R"({"sap":19,"object":"port )" + number +
                     R"(","call":"vor_cfg_set_can_id","values":{"port_num":)" + number + R"(,"can_id":1,"option":0}})" +
                     '\n';
        }
        lines += end;
        for (std::size_t at = 0; at < lines.size() + 1;) {
            const ssize_t sent = ::send(client.get(), lines.c_str() + at, lines.size() + 1 - at, MSG_NOSIGNAL);
            ASSERT_GT(sent, 0);
            at += static_cast<std::size_t>(sent);
        }
    };
    load(Stream(in_place("run/vorsim.control")), 3000, "");
    const Stream honest(in_place("run/vorsim.control"));
    load(honest, 3000, "wrong");
    const Bound front_end(client_sap);
    EXPECT_EQ(0, ask(front_end)) << "others are served meanwhile";
    EXPECT_EQ('-', honest.line()[0]) << "after what the first would have taken";
    EXPECT_TRUE(state()["managers"].empty());
}

TEST_F(Attack, passed_descriptors_are_closed)
{
    const Gateway gateway(place, {});
    const auto count = [&] {
        const auto all = fs::directory_iterator("/proc/" + std::to_string(gateway.pid()) + "/fd");
        return std::distance(begin(all), end(all));
    };
    const auto before = count();
    std::array<int, 20> passed{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof passed)> control{};
    char bytes[] = "x";
    iovec data{bytes, 1};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* const part = CMSG_FIRSTHDR(&message);
    part->cmsg_level = SOL_SOCKET;
    part->cmsg_type = SCM_RIGHTS;
    part->cmsg_len = CMSG_LEN(sizeof passed);
    std::memcpy(CMSG_DATA(part), passed.data(), sizeof passed); // standard input, again and again
    const vorsim::sockets::Descriptor sender(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_un to = address_of(in_place("run/sap-2"));
    const Stream talker(konfd_path);
    const Stream asker(in_place("run/vorsim.control"));
    for (int time = 0; time < 50; ++time) {
        message.msg_name = &to;
        message.msg_namelen = sizeof to;
        EXPECT_EQ(1, sendmsg(sender.get(), &message, 0));
        message.msg_name = nullptr;
        message.msg_namelen = 0;
        EXPECT_EQ(1, sendmsg(time % 2 == 0 ? talker.get() : asker.get(), &message, MSG_NOSIGNAL));
    }
    const Bound front_end(client_sap);
    EXPECT_EQ(0, ask(front_end));
    EXPECT_EQ(before + 2, count()) << "and the two connections";
}

TEST_F(Attack, descriptor_exhaustion_recovers_without_spinning)
{
    fs::rename(in_place("bin/vorsim"), in_place("bin/all"));
    std::ofstream(in_place("bin/vorsim")) << "#!/bin/sh\nulimit -n 56\nexec all \"$@\"\n";
    fs::permissions(in_place("bin/vorsim"), fs::perms::owner_all);
    Gateway gateway(place, {"--state", "state"});
    const Stream watcher(in_place("run/vorsim.control"));
    watcher.send(std::string("watch\0", 6));
    EXPECT_EQ("+\n", watcher.line());
    const Bound front_end(client_sap);
    std::vector<vorsim::sockets::Descriptor> many;
    for (int client = 0; client < 60; ++client) { // until its descriptors are gone, and some more
        vorsim::sockets::Descriptor one(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        const sockaddr_un to = address_of(konfd_path);
        connect(one.get(), reinterpret_cast<const sockaddr*>(&to), sizeof to);
        many.push_back(std::move(one));
        EXPECT_EQ(0, ask(front_end));
    }
    const long before = ticks_of(gateway.pid());
    // The last one outside is let in when the first has been idle long enough: a wait of seconds.
    const Stream last(konfd_path);
    last.send("-d\n");
    EXPECT_EQ("-o\n", last.line());
    EXPECT_LT(ticks_of(gateway.pid()) - before, sysconf(_SC_CLK_TCK) / 2);
    EXPECT_EQ(0, ask(front_end));
    EXPECT_EQ(0, gateway.stop(SIGTERM));
    EXPECT_TRUE(contains(held("state"), "\"messages\": 61")) << "its file is written nevertheless";
}

TEST(limits, state_is_bounded)
{
    vorsim::gateway::Gateway gateway({});
    const long before = peak_of(getpid());
    std::string last;
    for (unsigned port = 0; port < 0x8000; ++port) {
        const std::uint8_t payload[] = {static_cast<std::uint8_t>(port), static_cast<std::uint8_t>(port >> 8), 1, 0};
        const vorsim::gateway::Decision decision =
            gateway.judge({.sap = 4, .source = client_sap, .id = 0x4006, .payload = payload});
        gateway.store(decision);
        last = decision.record.complaint;
    }
    EXPECT_EQ("no room for more settings; vorsim reset clears them", last);
    EXPECT_GT(gateway.state().managers().at(4).size(), 5'000U);
    EXPECT_LT(peak_of(getpid()) - before, most_growth_kb);
    const std::uint8_t again[] = {0, 0, 0, 0}; // what is there already may change
    EXPECT_FALSE(gateway.judge({.sap = 4, .id = 0x4006, .payload = again}).record.complained);
}

TEST(limits, readings_are_bounded)
{
    vorsim::gateway::Gateway gateway({});
    const auto polls = [&gateway](unsigned input) {
        const std::uint8_t payload[] = {static_cast<std::uint8_t>(input >> 16), 0, static_cast<std::uint8_t>(input),
                                        static_cast<std::uint8_t>(input >> 8)};
        const auto values =
            gateway.judge({.sap = 5, .id = 0x5007, .answer_wanted = true, .payload = payload}).record.answer_values;
        return *std::ranges::find(values, "polling_count", &vorsim::values::Value::name)->held<std::uint64_t>();
    };
    const std::uint64_t first = polls(0);
    for (unsigned input = 1; input < 3'000; ++input) {
        polls(input); // two readings each
    }
    EXPECT_GT(polls(0), first) << "the first to be asked for counts on";
    EXPECT_THROW(gateway.measurements().set("adc 200/1 polling_count", {5}, true), std::runtime_error);
    gateway.measurements().set("adc 0/0 polling_count", {5}, true);
    EXPECT_EQ(5U, polls(0));
}

TEST_F(Attack, startup_can_be_interrupted)
{
    place.run("mkdir -m 700 -p run");
    const vorsim::sockets::Descriptor directory(open(in_place("run").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(0, flock(directory.get(), LOCK_EX)); // every SAP's binding waits for it
    const auto stopped = place.run("vorsim >said 2>&1 & until [ -e run/vorsim.control ]; do :; done; kill $!; wait $!");
    EXPECT_EQ(1, stopped.exit_code);
    EXPECT_TRUE(contains(held("said"), "not stopped in time"));
}

} // namespace
