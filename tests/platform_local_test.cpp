// What the development platform does inside one process: buffers, timers, log,
// and the sockets to other daemons.
#include <algorithm>
#include <array>
#include <cstring>
#include <future>
#include <vector>

#include <fcntl.h>

#include "platform_fixture.hpp"

namespace {

// --- Buffers ----------------------------------------------------------------

TEST_F(Platform, longest_free_buffer_is_reused_first)
{
    VOR_IPC_MSG_REF first;
    VOR_IPC_MSG_REF second;
    vor_ipc_get_buffer(&first);
    vor_ipc_get_buffer(&second);
    void* const order[] = {second.data_ptr, first.data_ptr};
    char* const kept = static_cast<char*>(vor_ipc_get_payload_ptr(&first, 0));
    strcpy(kept, "record");
    vor_ipc_drop_msg_buf(&second);
    vor_ipc_drop_msg_buf(&first);
    std::vector<VOR_IPC_MSG_REF> taken(1);
    while (vor_ipc_get_buffer(&taken.back()), taken.back().data_ptr != order[0]) {
        ASSERT_NE(order[1], taken.back().data_ptr);
        taken.emplace_back();
    }
    EXPECT_STREQ("record", kept);
    errors_of([&] { vor_ipc_drop_msg_buf(&second); }); // again: the new taker keeps it
    taken.emplace_back();
    vor_ipc_get_buffer(&taken.back());
    EXPECT_EQ(order[1], taken.back().data_ptr);
    const std::string errors = errors_of([&] {
        while (taken.size() < 200) { // more than the pool begins with, and than a call that keeps to its two
            taken.emplace_back();
            EXPECT_EQ(0, vor_ipc_get_buffer(&taken.back()));
        }
    });
    EXPECT_EQ(1, std::count(errors.begin(), errors.end(), '\n')) << errors;
    EXPECT_TRUE(contains(errors, "64 message buffers are taken"));
    EXPECT_TRUE(std::any_of(taken.begin(), taken.end(), [](VOR_IPC_MSG_REF& message) {
        return *static_cast<vor_uchar*>(vor_ipc_get_payload_ptr(&message, 4095)) == 0xa5; // not written by anyone
    }));
    EXPECT_EQ(taken.size(), vorinfra_buffers_taken());
    for (auto& message : taken) {
        vor_ipc_drop_msg_buf(&message);
    }
}

TEST_F(Platform, invalid_references_are_reported_and_ignored)
{
    Message message;
    VOR_IPC_MSG_REF copy = message.ref;
    char elsewhere[16];
    VOR_IPC_MSG_REF foreign{elsewhere, 16, 0, 0};
    Message taken;
    VOR_IPC_MSG_REF inside{taken.payload(), 16, 0, 0};
    vor_ipc_drop_msg_buf(&message.ref);
    for (VOR_IPC_MSG_REF* const wrong : {&message.ref, &copy, &foreign, &inside}) {
        EXPECT_TRUE(contains(errors_of([&] { vor_ipc_drop_msg_buf(wrong); }), "vor_ipc_drop_msg_buf"));
        EXPECT_TRUE(contains(errors_of([&] { EXPECT_EQ(nullptr, vor_ipc_get_payload_ptr(wrong, 0)); }), "payload"));
    }
    EXPECT_EQ(1U, vorinfra_buffers_taken());
}

TEST_F(Platform, unbind_frees_only_its_buffers)
{
    VOR_IPC_HANDLE* const client = vor_ipc_bind(client_sap, 0);
    VOR_IPC_MSG_REF held;
    VOR_IPC_MSG_REF used;
    vor_ipc_get_buffer(&held);
    const Bound other(201);
    Message kept;
    vor_ipc_get_buffer(&used);
    vor_ipc_send(client, manager_sap, 1, &used, 0, 0); // now the client's
    EXPECT_EQ(3U, vorinfra_buffers_taken());
    EXPECT_EQ(1, vor_ipc_unbind(client));
    EXPECT_EQ(1U, vorinfra_buffers_taken());
    EXPECT_NE(nullptr, kept.payload());
}

TEST_F(Platform, calls_without_a_handle_fail)
{
    VOR_IPC_HANDLE* const gone = vor_ipc_bind(client_sap, 0);
    EXPECT_EQ(1, vor_ipc_unbind(gone));
    Message message;
    VORINFRA_MESSAGE received{};
    for (VOR_IPC_HANDLE* const handle : {gone, static_cast<VOR_IPC_HANDLE*>(nullptr)}) {
        const std::string errors = errors_of([&] {
            EXPECT_EQ(0, vor_ipc_unbind(handle));
            EXPECT_EQ(-1, vor_ipc_send(handle, manager_sap, 1, &message.ref, 0, 0));
            EXPECT_EQ(-1, vor_ipc_request_response(handle, 7, 1, &message.ref, &message.ref, 0, 0));
            EXPECT_EQ(-1, vor_ipc_debug(handle, 7));
            EXPECT_EQ(-1, vorinfra_descriptor(handle));
            EXPECT_EQ(-1, vorinfra_receive(handle, &received));
        });
        EXPECT_TRUE(contains(errors, "vor_ipc_send: the handle is not bound"));
    }
    char path[] = "/tmp/x";
    EXPECT_EQ(-1, vor_socket_config_unix(nullptr, path));
    EXPECT_EQ(-1, vor_socket_connect(nullptr, 1));
    EXPECT_EQ(-1, vor_socket_close(nullptr, 1));
    EXPECT_EQ(-1, vor_timer_start(nullptr, 1, 0));
}

// --- Timers, log, sockets ---------------------------------------------------

std::promise<void> fired;

TEST_F(Platform, timers_run_only_on_request)
{
    const auto newest = [] {
        std::vector<VORINFRA_TIMER> timers(vorinfra_timers(nullptr, 0));
        vorinfra_timers(timers.data(), static_cast<unsigned>(timers.size()));
        return timers.back();
    };
    fired = {};
    const VOR_TIMER_CALLBACK callback = [] { fired.set_value(); };
    VOR_TIMER_HANDLE* const recorded = vor_timer_create(0, &home, callback);
    EXPECT_EQ(&home, newest().context);
    EXPECT_EQ(0, newest().started);
    EXPECT_EQ(0, vor_timer_start(recorded, 0, 0));
    EXPECT_EQ(1, newest().started);

    setenv("VORINFRA_TIMERS", "ruN", 1);
    EXPECT_TRUE(contains(errors_of([&] { EXPECT_EQ(-1, vor_timer_start(recorded, 0, 0)); }), "VORINFRA_TIMERS"));
    setenv("VORINFRA_TIMERS", "run", 1);
    EXPECT_EQ(0, vor_timer_start(vor_timer_create(0, nullptr, callback), 3, 0));
    EXPECT_EQ(std::future_status::ready, fired.get_future().wait_for(std::chrono::seconds(10)));
    EXPECT_EQ(1, newest().fired);
    EXPECT_EQ(3U, newest().milliseconds); // set once only, or the promise would have thrown
}

TEST_F(Platform, log_levels)
{
    const auto log = [] { return errors_of([] { vor_dbg_log(0x8000, " in %d seconds\n", 5); }); };
    EXPECT_EQ("", log());
    setenv("VORINFRA_LOG", "0x4000", 1);
    EXPECT_EQ("", log());
    setenv("VORINFRA_LOG", "0x8001", 1);
    EXPECT_EQ("vorinfra:  in 5 seconds\n", log());
    EXPECT_EQ(512U - 1, errors_of([] { vor_dbg_log(1, "%s", std::string(9999, 'x').c_str()); }).size());

    const Bound client(client_sap);
    const Bound manager(manager_sap);
    const auto send = [&] {
        return errors_of([&] {
            Message message;
            vor_ipc_send(client, manager_sap, 0x7003, &message.ref, 2, 0);
        });
    };
    vor_ipc_debug(client, manager_sap);
    EXPECT_TRUE(contains(send(), "sent: SAP 200 to 7, id 0x7003"));
    vor_ipc_debug(client, manager_sap);
    EXPECT_EQ("", send());
}

TEST_F(Platform, stream_sockets_are_under_the_root)
{
    setenv("VORINFRA_ROOT", (home + "//").c_str(), 1);
    setenv("VORINFRA_TIMEOUT_MS", "50", 1);
    const int listener = raw_socket(home + "/daemon.socket", SOCK_STREAM);
    ASSERT_EQ(0, listen(listener, 1));
    auto* const socket = static_cast<VOR_UNIX_SOCKET*>(vor_socket_create(1, 1, 0));
    ASSERT_NE(nullptr, socket);
    EXPECT_EQ(-1, vor_socket_connect(socket, 1)) << "no path yet";
    std::string path = "/" + std::string(107 - home.size(), 'p');
    EXPECT_TRUE(
        contains(errors_of([&] { EXPECT_EQ(-1, vor_socket_config_unix(socket, path.data())); }), "must have at most"));
    path.pop_back();
    EXPECT_EQ(0, vor_socket_config_unix(socket, path.data()));
    EXPECT_EQ(-1, vor_socket_connect(socket, 1)) << "no listener";
    path = "/daemon.socket";
    EXPECT_EQ(0, vor_socket_config_unix(socket, path.data()));
    EXPECT_EQ(home + path, socket->sock_path);
    ASSERT_EQ(0, vor_socket_connect(socket, 1));
    const int peer = accept(listener, nullptr, nullptr);

    char answer[8] = "";
    int ends[2]; // one of them passed with the answer
    ASSERT_EQ(0, pipe2(ends, O_CLOEXEC | O_NONBLOCK));
    pass(peer, "-o", ends[1]);
    EXPECT_EQ(2, vor_recv(socket->sock_fd, answer, sizeof answer, 0));
    EXPECT_STREQ("-o", answer);
    EXPECT_EQ(0, read(ends[0], answer, 1)) << "nobody keeps what was passed";
    close(ends[0]);

    setenv("VORINFRA_TIMEOUT_MS", "10000", 1);
    std::string large(1 << 20, 'c'); // more than the socket holds
    auto reading = std::async(std::launch::async, [&] {
        std::string copy(large.size(), ' ');
        return recv(peer, copy.data(), copy.size(), MSG_WAITALL) == static_cast<ssize_t>(copy.size()) && copy == large;
    });
    EXPECT_EQ(static_cast<vor_int32>(large.size()),
              vor_send(socket->sock_fd, large.data(), static_cast<vor_int32>(large.size()), 0));
    EXPECT_TRUE(reading.get());
    setenv("VORINFRA_TIMEOUT_MS", "50", 1);
    EXPECT_EQ(-1, vor_send(socket->sock_fd, large.data(), static_cast<vor_int32>(large.size()), 0)) << "not read";
    close(peer);
    EXPECT_EQ(-1, vor_send(socket->sock_fd, large.data(), 1, 0)) << "and no signal";
    EXPECT_EQ(0, vor_socket_close(socket, 1));
    close(listener);

    char rooted[108];
    for (const auto& [root, asked, expected] : std::initializer_list<std::array<std::string, 3>>{
             {"/", "relative", "relative"},
             {"/", "/tmp/konfd.socket", "/tmp/konfd.socket"},
             {"", "/tmp/konfd.socket", home + "/run/konfd.socket"}}) { // the gateway's own
        setenv("VORINFRA_ROOT", root.c_str(), 1);
        EXPECT_EQ(0, vorinfra_rooted_path(asked.c_str(), rooted, sizeof rooted));
        EXPECT_EQ(expected, rooted);
    }
    fs::create_directory_symlink(home, home + "/any");
    fs::create_directory(home + "/open");
    fs::permissions(home + "/open", fs::perms(0777));
    setenv("VORINFRA_ROOT", (home + "/any/open").c_str(), 1);
    EXPECT_TRUE(contains(errors_of([&] { EXPECT_EQ(-1, vorinfra_rooted_path("/x", rooted, sizeof rooted)); }),
                         "others can rename entries in " + home + "/open "));
    setenv("VORINFRA_ROOT", "relative", 1);
    EXPECT_TRUE(contains(errors_of([&] { EXPECT_EQ(-1, vorinfra_rooted_path("/x", rooted, sizeof rooted)); }),
                         "must be an absolute path"));
    EXPECT_TRUE(contains(errors_of([] { EXPECT_EQ(nullptr, vor_socket_create(2, 1, 0)); }), "domain 2"));
}

// A stream to a daemon that listens at a path, made and connected.
VOR_UNIX_SOCKET* connected(std::string path, vor_int32 result)
{
    auto* const socket = static_cast<VOR_UNIX_SOCKET*>(vor_socket_create(1, 1, 0));
    EXPECT_EQ(0, vor_socket_config_unix(socket, path.data()));
    EXPECT_EQ(result, vor_socket_connect(socket, 1));
    return socket;
}

TEST_F(Platform, late_answer_ends_its_connection)
{
    setenv("VORINFRA_ROOT", home.c_str(), 1);
    setenv("VORINFRA_TIMEOUT_MS", "50", 1);
    const int listener = raw_socket(home + "/daemon.socket", SOCK_STREAM);
    ASSERT_EQ(0, listen(listener, 1));
    auto* const socket = connected("/daemon.socket", 0);
    const int peer = accept(listener, nullptr, nullptr);
    char answer[8] = "";
    EXPECT_EQ(-1, vor_recv(socket->sock_fd, answer, sizeof answer, 0)) << "nothing came in time";
    EXPECT_EQ(-1, send(peer, "-o", 2, MSG_NOSIGNAL));
    EXPECT_EQ(-1, vor_send(socket->sock_fd, answer, 1, 0)) << "the next query would get that answer";
    EXPECT_EQ(0, vor_socket_close(socket, 1));
    close(peer);
    close(listener);
}

TEST_F(Platform, stream_socket_of_another_user_is_refused)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can be another user";
    }
    setenv("VORINFRA_ROOT", home.c_str(), 1);
    const int listener = raw_socket(home + "/daemon.socket", SOCK_STREAM);
    ASSERT_EQ(0, seteuid(65534)); // the owner of a stream socket is whoever listens
    ASSERT_EQ(0, listen(listener, 1));
    ASSERT_EQ(0, seteuid(0));
    const std::string errors = errors_of([] { EXPECT_EQ(0, vor_socket_close(connected("/daemon.socket", -1), 1)); });
    EXPECT_TRUE(contains(errors, "is served by user 65534, not by user 0 or root"));
    close(listener);
}

} // namespace
