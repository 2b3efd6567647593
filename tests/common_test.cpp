// Endpoints, the delayed restart, and what all calls have in common.
#include <device_mgmt.h>

#include "calls/calls.hpp"

#include <dlfcn.h>
#include <signal.h>

CALLS(common) = {
    CALL(
        vor_system_restart(5),
        "sap 0 id 0xc one-way record 2: 05 00; timer 0 null; log 32768 ` System restart in 5 seconds\\n`; start 5000 0",
        sent_record_then_timer),
    SENDS(vor_system_restart(32767), "sap 0 id 0xc one-way record 2: ff 7f; timer 0 null; "
                                     "log 32768 ` System restart in 32767 seconds\\n`; start 32767000 0"),
    SENDS(vor_system_restart(-1), "sap 0 id 0xc one-way record 2: ff ff; timer 0 null; "
                                  "log 32768 ` System restart in -1 seconds\\n`; start 4294966296 0"),
};

namespace {

bool signal_blocked()
{
    sigset_t blocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    return sigismember(&blocked, SIGRTMIN + 5) == 1;
}

std::string file_of(const void* address)
{
    Dl_info info = {};
    return dladdr(address, &info) != 0 ? info.dli_fname : "nowhere";
}

} // namespace

TEST(restart, missing_timer_is_ignored)
{
    begin_call();
    fake::script.timer_missing = true;
    EXPECT_EQ(outcome(vor_system_restart(5)), "0:Q0sqtlg");
}

TEST(restart, timer_reboots)
{
    begin_call();
    vor_system_restart(5);
    ASSERT_EQ(file_of(dlsym(RTLD_DEFAULT, "system")), file_of(reinterpret_cast<void*>(&vor_ipc_bind)));
    ASSERT_EQ(fake::timer_callback(), &vor_restart_timer);
    fake::reset();
    vor_restart_timer();
    EXPECT_EQ(fake::events(), "system `reboot`");
}

TEST(frame, chain_length_is_cut_to_16_bits)
{
    begin_call();
    fake::script.serialized_size = 65536 + 20;
    vor_cfg_set_can_id(1, 2, 3);
    EXPECT_EQ(fake::events(), "sap 19 id 0x13003 | 1 i16 1 | 6 i32 2 | 10 i16 3 (length 20 for a chain of 31)");
}

TEST(endpoint, bind_blocks_platform_signal)
{
    fake::reset();
    sigset_t signal;
    sigemptyset(&signal);
    sigaddset(&signal, SIGRTMIN + 5);
    pthread_sigmask(SIG_UNBLOCK, &signal, nullptr);

    fake::script.bind_fails = true;
    vor_cfg_set_ipc_endpoint(fake::handle());
    vor_int16 result = 0;
    EXPECT_EQ(printed_by([&] { result = vor_cfg_create_ipc_endpoint(65535); }), "ERROR : IPC Bind failed \n");
    EXPECT_EQ(result, -1);
    EXPECT_EQ(vor_cfg_get_ipc_endpoint(), nullptr) << "a failed bind leaves no earlier endpoint";
    EXPECT_FALSE(signal_blocked());

    fake::script.bind_fails = false;
    EXPECT_EQ(printed_by([&] { result = vor_cfg_create_ipc_endpoint(200); }), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(vor_cfg_create_ipc_endpoint(201), 0);
    EXPECT_EQ(vor_cfg_get_ipc_endpoint(), fake::handle());
    EXPECT_TRUE(signal_blocked());

    fake::script.unbind_result = 200;
    EXPECT_EQ(vor_cfg_remove_ipc_endpoint(), 200);
    EXPECT_EQ(vor_cfg_get_ipc_endpoint(), nullptr);
    EXPECT_TRUE(signal_blocked());
    fake::script.unbind_result = 0;
    EXPECT_EQ(vor_cfg_remove_ipc_endpoint(), 0);
    EXPECT_EQ(fake::events(), "bind 65535 0; bind 200 0; bind 201 0; unbind; unbind null");
}

TEST(endpoint, failed_connection_keeps_socket)
{
    const struct {
        void (*script)();
        const char* events;
        vor_int16 result;
        bool socket;
    } rows[] = {
        {[] { fake::script.socket_missing = true; }, "socket 1 1 0", -1, false},
        {[] { fake::script.config_result = -1; }, "socket 1 1 0; unix /tmp/konfd.socket", -1, true},
        {[] { fake::script.connect_result = -1; }, "socket 1 1 0; unix /tmp/konfd.socket; connect 1", -1, true},
        {[] { fake::script.config_result = fake::script.connect_result = -2; },
         "socket 1 1 0; unix /tmp/konfd.socket; connect 1", 0, true},
    };
    for (const auto& row : rows) {
        fake::reset();
        row.script();
        EXPECT_EQ(vor_cfg_create_sock_endpoint(), row.result);
        EXPECT_EQ(fake::events(), row.events);
        EXPECT_EQ(vor_cfg_get_sock_endpoint() != nullptr, row.socket);
    }
    fake::reset();
    fake::script.close_result = -70000;
    EXPECT_EQ(vor_cfg_remove_sock_endpoint(), -70000);
    EXPECT_EQ(vor_cfg_get_sock_endpoint(), nullptr);
    vor_cfg_remove_sock_endpoint();
    EXPECT_EQ(fake::events(), "close 1; close null 1");
}

TEST(endpoint, user_flag_is_kept)
{
    EXPECT_EQ(vor_cfg_get_user_flag(), 0);
    EXPECT_EQ(vor_cfg_set_user_flag(200), 0);
    EXPECT_EQ(vor_cfg_get_user_flag(), 200);
}
