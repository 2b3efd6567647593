// Faults through real processes: the verdict that vorcfg gives on each, and what they must not delay.
#include <csignal>
#include <future>

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
        {"konfd: answer \"+o\"", query, 1, "refused by konfd: answer \"+o\""},
        {"konfd: answer \"-o and more\"", query, 0, "accepted by konfd"},
        {"konfd: split", query, 1, "refused by konfd: answer \"-\""},
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
