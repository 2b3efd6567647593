// The talk with konfd: queries, and the two fixed commands.
#include "konfd_test.hpp"

namespace {

std::string send_line(int length, const std::string& command)
{
    return "send 9 " + std::to_string(length) + " 0 `" + command + "`";
}

struct Reply {
    const char* what;
    void (*script)();
    vor_int32 result;
    bool heard = true;
};

// A talk's last answer, the nth.
template <int nth>
const Reply replies[] = {
    {"-o", [] { fake::script.replies[nth] = "-o"; }, 0},
    {"-okay", [] { fake::script.replies[nth] = "-okay"; }, 0},
    {"50 bytes", [] { fake::script.replies[nth] = "-o" + std::string(48, 'x'); }, 0},
    {"-e", [] { fake::script.replies[nth] = "-e"; }, -1},
    {"-, perhaps behind an earlier -o", [] { fake::script.replies[nth] = "-"; }, -1},
    {"o-o", [] { fake::script.replies[nth] = "o-o"; }, -1},
    {"nothing", [] { fake::script.replies[nth] = ""; }, -1, false},
    {"failing", [] { fake::script.receives[nth + 1] = -1; }, -1, false},
    {"0 although bytes came", [] { fake::script.receives[nth + 1] = 0; }, -1, false},
};

void begin_talk(std::vector<std::string> replies)
{
    fake::reset();
    vor_errno = 55;
    fake::script.replies = std::move(replies);
}

// "result: what was done", the steps by their names.
std::string steps(vor_int32 result)
{
    return std::to_string(result) + ": " + fake::event_names();
}

} // namespace

TEST(konfd, query_is_sent_and_answer_decides)
{
    for (const auto& reply : replies<0>) {
        begin_talk({"-o"});
        vor_cfg_create_sock_endpoint();
        Query query(1);
        network(query);
        const int held = fake::live_allocations();
        reply.script();
        EXPECT_EQ(vor_konfd_bi_dir_comm(query.record), reply.result) << reply.what;
        EXPECT_EQ(fake::events(), "socket 1 1 0; unix /tmp/konfd.socket; connect 1; " +
                                      send_line(51, R"(-s -l "ssid x" -r "^ssid $" "interface wlan0"\0     )") +
                                      "; recv 9 50 0");
        EXPECT_EQ(fake::live_allocations(), held);
        EXPECT_EQ(vor_errno, 55);
    }
}

TEST(konfd, stale_answer_is_not_reread)
{
    begin_talk({"-o", "-", "-o"});
    vor_cfg_create_sock_endpoint();
    Query query(3);
    query.pattern("a", nullptr);
    EXPECT_EQ(vor_konfd_bi_dir_comm(query.record), 0);
    EXPECT_EQ(vor_konfd_bi_dir_comm(query.record), -1);
    EXPECT_EQ(vor_konfd_bi_dir_comm(query.record), 0);
    EXPECT_EQ(fake::event_names(), "socket unix connect send recv send recv send recv") << "the connection stays open";
}

TEST(konfd, unsendable_queries)
{
    const struct {
        const char* what;
        void (*script)();
        const char* steps;
    } rows[] = {
        {"no endpoint",
         [] {
             vor_cfg_remove_sock_endpoint();
             fake::reset();
         },
         "-1: "},
        {"no memory", [] { fail_allocation(1); }, "-1: socket unix connect"},
        {"refused", [] { fake::script.socket_sends[1] = -1; }, "-1: socket unix connect send"},
        {"sent in part", [] { fake::script.socket_sends[1] = 3; }, "0: socket unix connect send recv"},
        {"-2 is not a refusal", [] { fake::script.socket_sends[1] = -2; }, "0: socket unix connect send recv"},
        {"16 bits of -1", [] { fake::script.socket_sends[1] = 0xffff; }, "0: socket unix connect send recv"},
        {"32-bit answer", [] { fake::script.receives[1] = 0x10000; }, "0: socket unix connect send recv"},
    };
    for (const auto& row : rows) {
        fake::reset();
        VOR_CFG_PROTO record = {};
        record.op = 3;
        record.pattern = "^a$"_t;
        record.path_head.stqh_last = &record.path_head.stqh_first;
        vor_cfg_create_sock_endpoint();
        fake::script.replies = {"-o"};
        row.script();
        EXPECT_EQ(steps(vor_konfd_bi_dir_comm(&record)), row.steps) << row.what;
        EXPECT_EQ(fake::live_allocations(), 0) << row.what;
    }
    begin_talk({"-o"});
    vor_cfg_create_sock_endpoint();
    EXPECT_EQ(steps(vor_konfd_bi_dir_comm(nullptr)), "-1: socket unix connect");
    EXPECT_EQ(steps(vor_konfd_bi_dir_comm(Query(1).record)), "-1: socket unix connect") << "an unfinished query";
}

// --- The two fixed commands --------------------------------------------------

namespace {

vor_int32 store_network()
{
    return vor_cfg_set_wifi_ssid_password("site"_t, "secret"_t);
}

vor_int32 store_address()
{
    vor_int32 result = 0;
    printed_by([&] { result = vor_cfg_set_interface_ip("eth1"_t, "dhcp"_t); });
    return result;
}

// The first `count` words of a talk's steps.
std::string first(int count, const std::string& steps)
{
    size_t end = 0;
    for (int i = 0; i < count; ++i) {
        end = steps.find(' ', end + (i > 0));
    }
    return steps.substr(0, end);
}

const std::string network_steps = "socket unix connect send send recv close";
const std::string address_steps = "socket unix connect send recv send recv close";
const std::string connected = "socket 1 1 0; unix /tmp/konfd.socket; connect 1; ";

} // namespace

// Two wifi commands share one answer.
TEST(konfd, long_texts_arrive_whole)
{
    const std::string name(32, 's');
    const std::string phrase(63, 'p');
    begin_talk({"-o"});
    EXPECT_EQ(vor_cfg_set_wifi_ssid_password(std::string(name).data(), std::string(phrase).data()), 0);
    EXPECT_EQ(fake::events(), connected + send_line(75, "-s -l \"ssid " + name + R"(" -r "^ssid " "interface wlan0")") +
                                  "; " +
                                  send_line(154, "-s -l \"password " + phrase +
                                                     R"(" -r "^password " "interface wlan0" "ssid )" + name + '"') +
                                  "; recv 9 50 0; close 1");

    const std::string interface(500, 'i');
    const std::string address(600, 'a');
    begin_talk({"-o", "-o"});
    printed_by([&] { vor_cfg_set_interface_ip(std::string(interface).data(), std::string(address).data()); });
    EXPECT_EQ(
        fake::events(),
        connected + send_line(542, R"(-d -s -l "interface eth0" -r "interface )" + interface + "$\"") +
            "; recv 9 50 0; " +
            send_line(1149, "-s -l \"ip-address " + address + R"(" -r "^ip-address" "interface )" + interface + '"') +
            "; recv 9 50 0; close 1");
}

TEST(konfd, failed_send_is_printed)
{
    begin_talk({});
    fake::script.socket_sends[1] = 0xffff;
    const auto printed = printed_by([] { vor_cfg_set_interface_ip("eth1"_t, "dhcp"_t); });
    EXPECT_EQ(printed, "The konf_command is: -d -s -l \"interface eth0\" -r \"interface eth1$\" \n"
                       "The socket created\n"
                       "got socket \n"
                       "The command to konfd socket sent ret is -1\n");
}

TEST(konfd, last_answer_decides_fixed_command)
{
    for (const auto& reply : replies<0>) {
        begin_talk({"-o"});
        reply.script();
        EXPECT_EQ(steps(store_network()),
                  std::to_string(reply.result) + ": " + first(reply.heard ? 7 : 6, network_steps))
            << reply.what;
        EXPECT_EQ(vor_errno, 55);
    }
    for (const auto& reply : replies<1>) {
        begin_talk({"-o", "-o"});
        reply.script();
        EXPECT_EQ(steps(store_address()),
                  std::to_string(reply.result) + ": " + first(reply.heard ? 8 : 7, address_steps))
            << reply.what;
        EXPECT_EQ(vor_errno, 55);
    }
}

// The two calls look at the low 16 bits of what the platform returns.
TEST(konfd, fixed_command_failure_points)
{
    struct End {
        vor_int32 result;
        int steps;
    };
    const struct {
        const char* what;
        void (*script)();
        End network, address;
    } rows[] = {
        {"no fault", [] {}, {0, 7}, {0, 8}},
        {"no memory", [] { fail_allocation(1); }, {-1, 0}, {-1, 0}},
        {"no memory for the second", [] { fail_allocation(2); }, {-1, 4}, {-1, 5}},
        {"no socket", [] { fake::script.socket_missing = true; }, {-1, 1}, {-1, 1}},
        {"no path", [] { fake::script.config_result = -1; }, {-1, 2}, {-1, 2}},
        {"no connection", [] { fake::script.connect_result = -1; }, {-1, 3}, {-1, 3}},
        {"first send", [] { fake::script.socket_sends[1] = -1; }, {-1, 4}, {-1, 4}},
        {"first send 0xffff", [] { fake::script.socket_sends[1] = 0xffff; }, {-1, 4}, {-1, 4}},
        {"first send in part", [] { fake::script.socket_sends[1] = 0; }, {0, 7}, {0, 8}},
        {"second send", [] { fake::script.socket_sends[2] = -1; }, {-1, 5}, {-1, 6}},
        {"second send 0x1ffff", [] { fake::script.socket_sends[2] = 0x1ffff; }, {-1, 5}, {-1, 6}},
        {"first receive", [] { fake::script.receives[1] = -1; }, {-1, 6}, {-1, 5}},
        {"first receive of one byte", [] { fake::script.replies[0] = "-"; }, {-1, 7}, {0, 8}},
        {"first receive 0", [] { fake::script.receives[1] = 0; }, {-1, 6}, {-1, 5}},
        {"first receive 0x10000", [] { fake::script.receives[1] = 0x10000; }, {-1, 6}, {-1, 5}},
        {"first receive 0x8005", [] { fake::script.receives[1] = 0x8005; }, {-1, 6}, {-1, 5}},
        {"first receive -65531", [] { fake::script.receives[1] = -65531; }, {0, 7}, {0, 8}},
        {"second receive", [] { fake::script.receives[2] = 0; }, {0, 7}, {-1, 7}},
        {"second receive 0x18000", [] { fake::script.receives[2] = 0x18000; }, {0, 7}, {-1, 7}},
        {"close", [] { fake::script.close_result = -1; }, {-1, 7}, {-1, 8}},
        {"close 0xffff", [] { fake::script.close_result = 0xffff; }, {-1, 7}, {-1, 8}},
        {"close -65537", [] { fake::script.close_result = -65537; }, {-1, 7}, {-1, 8}},
        {"close -2", [] { fake::script.close_result = -2; }, {0, 7}, {0, 8}},
    };
    for (const auto& row : rows) {
        begin_talk({"-o", "-o"});
        row.script();
        EXPECT_EQ(steps(store_network()),
                  std::to_string(row.network.result) + ": " + first(row.network.steps, network_steps))
            << row.what;
        EXPECT_EQ(vor_cfg_get_sock_endpoint() != nullptr, row.network.steps > 1 && row.network.steps < 7) << row.what;
        begin_talk({"-o", "-o"});
        row.script();
        EXPECT_EQ(steps(store_address()),
                  std::to_string(row.address.result) + ": " + first(row.address.steps, address_steps))
            << row.what;
        EXPECT_EQ(vor_cfg_get_sock_endpoint() != nullptr, row.address.steps > 1 && row.address.steps < 8) << row.what;
        EXPECT_EQ(fake::live_allocations(), 0) << row.what;
    }
}

// Of the fixed commands' texts, only the address is looked at after an exchange.
TEST(konfd, null_texts_fail)
{
    begin_talk({});
    EXPECT_EQ(vor_cfg_set_wifi_ssid_password(nullptr, "secret"_t), -1);
    EXPECT_EQ(vor_cfg_set_wifi_ssid_password("site"_t, nullptr), -1);
    EXPECT_EQ(printed_by([] { EXPECT_EQ(vor_cfg_set_interface_ip(nullptr, "dhcp"_t), -1); }), "");
    EXPECT_EQ(fake::events(), "nothing");
    begin_talk({"-o", "-o"});
    const auto printed = printed_by(
        [] { EXPECT_EQ(steps(vor_cfg_set_interface_ip("eth1"_t, nullptr)), "-1: socket unix connect send recv"); });
    EXPECT_TRUE(printed.ends_with("The response from konfd socket received\n")) << printed;
    EXPECT_NE(vor_cfg_get_sock_endpoint(), nullptr);
    EXPECT_EQ(fake::live_allocations(), 0);
}
