// The development platform between two processes: chains, bindings, exchanges.
#include <csignal>
#include <cstring>
#include <fstream>
#include <future>
#include <latch>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>

#include "platform_fixture.hpp"

namespace {

std::string chain_text(const vor_uchar* chain, vor_uint16 size)
{
    std::string text;
    vor_uint16 cursor = 0;
    VORINFRA_ELEMENT element;
    int read;
    while ((read = vorinfra_next_element(chain, size, &cursor, &element)) == 1) {
        const std::string value(reinterpret_cast<const char*>(element.value), element.size);
        const char* const kinds[] = {"?", "i16 ", "i32 ", "str ", "raw "};
        text += (text.empty() ? "" : " | ") + std::to_string(element.tag) + ' ' + kinds[element.kind];
        text += element.kind < VORINFRA_STRING ? std::to_string(element.number) : value;
    }
    return read == 0 ? text : text + " | garbage";
}

// --- Chains -----------------------------------------------------------------

TEST_F(Platform, chain_arrives_with_tags_kinds_and_values)
{
    const Bound client(client_sap);
    const Bound manager(manager_sap);
    char empty[] = "";
    char name[] = "na\xc3\xafve \"x\"";
    unsigned char bytes[] = {'a', 0, 'b'};
    vor_tlv_chain_init(&chain);
    vor_tlv_chain_add_vor_int16(&chain, 1, -3);
    vor_tlv_chain_add_vor_int32(&chain, 65535, INT32_MIN);
    vor_tlv_chain_add_str(&chain, 5, empty);
    vor_tlv_chain_add_str(&chain, 6, name);
    vor_tlv_chain_add_raw(&chain, 7, sizeof bytes, bytes);
    vor_tlv_chain_add_raw(&chain, 7, 0, nullptr);
    const std::string expected = "1 i16 -3 | 65535 i32 -2147483648 | 5 str  | 6 str na\xc3\xafve \"x\" | 7 raw " +
                                 std::string("a\0b", 3) + " | 7 raw ";

    Message message;
    *static_cast<vor_uchar*>(vor_ipc_get_meta_data_ptr(&message.ref)) = 9;
    vor_int32 size = -1;
    vor_int32 measured = -1;
    EXPECT_EQ(0, vor_tlv_chain_serialize(&chain, nullptr, &measured));
    EXPECT_EQ(0, vor_tlv_chain_serialize(&chain, message.payload(1), &size));
    EXPECT_EQ(size, measured);
    vor_tlv_chain_free(&chain, 0);
    ASSERT_EQ(0, vor_ipc_send(client, manager_sap, 0x7003, &message.ref, static_cast<vor_uint16>(size), 0));

    const VORINFRA_MESSAGE received = next(manager);
    EXPECT_EQ(client_sap, received.source);
    EXPECT_EQ(manager_sap, received.destination);
    EXPECT_EQ(0x7003U, received.id);
    EXPECT_EQ(0, received.answer_wanted);
    ASSERT_EQ(1, received.meta_data_size);
    EXPECT_EQ(9, received.data[0]);
    EXPECT_EQ(size, received.payload_size);
    EXPECT_EQ(expected, chain_text(received.data + 1, received.payload_size));

    Message plain; // a flag byte that is part of the payload is not meta-data
    memcpy(plain.payload(1), "xy", 2);
    *plain.payload() = 'w';
    ASSERT_EQ(0, vor_ipc_send(client, manager_sap, 1, &plain.ref, 3, 0));
    const VORINFRA_MESSAGE second = next(manager);
    EXPECT_EQ(0, second.meta_data_size);
    EXPECT_EQ("wxy", std::string(reinterpret_cast<const char*>(second.data), second.payload_size));
}

TEST_F(Platform, refused_chain_is_never_sent)
{
    const Bound client(client_sap);
    const Bound manager(manager_sap);
    std::string large(4090, 'x'); // with its header and terminator exactly 4096 bytes
    const auto attempt = [&](vor_uint16 offset) {
        Message message;
        Message answer;
        vor_int32 size = -1;
        vor_tlv_chain_serialize(&chain, message.payload(offset), &size);
        vor_tlv_chain_free(&chain, 0);
        const auto length = static_cast<vor_uint16>(size);
        if (vor_ipc_send(client, manager_sap, 0x7003, &message.ref, length, 0) == 0) {
            return std::to_string(next(manager).payload_size);
        }
        EXPECT_EQ(-1, vor_ipc_request_response(client, manager_sap, 0x7003, &message.ref, &answer.ref, length, 0));
        VORINFRA_MESSAGE none;
        EXPECT_EQ(0, vorinfra_receive(manager, &none));
        return "refused, size " + std::to_string(size);
    };
    const auto fill = [&](int count) {
        vor_tlv_chain_init(&chain);
        vor_int32 result = 0;
        while (count-- > 0) {
            result = vor_tlv_chain_add_vor_int16(&chain, 1, 2);
        }
        return result;
    };

    EXPECT_EQ(0, fill(50));
    EXPECT_EQ("350", attempt(0));
    EXPECT_TRUE(contains(errors_of([&] { EXPECT_NE(0, fill(51)); }), "50 elements"));
    EXPECT_TRUE(contains(errors_of([&] { EXPECT_EQ("refused, size 0", attempt(0)); }), "0x7003 to SAP 7 not sent"));

    fill(1);
    EXPECT_TRUE(contains(errors_of([&] { vor_tlv_chain_add_str(&chain, 77, nullptr); }), "tag 77 has no text"));
    errors_of([&] { EXPECT_EQ("refused, size 0", attempt(0)); });

    for (const vor_uint16 offset : {static_cast<vor_uint16>(0), static_cast<vor_uint16>(1)}) {
        vor_tlv_chain_init(&chain);
        vor_tlv_chain_add_str(&chain, 1, large.data());
        const std::string errors =
            errors_of([&] { EXPECT_EQ(offset == 0 ? "4096" : "refused, size 0", attempt(offset)); });
        EXPECT_TRUE(offset == 0 || contains(errors, "4096 bytes does not fit its message of 4095 bytes")) << errors;
    }
    large.resize(70000, 'x'); // more than any element can be
    vor_tlv_chain_init(&chain);
    EXPECT_TRUE(
        contains(errors_of([&] { vor_tlv_chain_add_str(&chain, 3, large.data()); }), "too large for a message"));
    errors_of([&] { EXPECT_EQ("refused, size 0", attempt(0)); });

    Message message; // what does not fit leaves the end of its buffer alone
    vor_uchar* const end = message.payload(4090);
    memset(end, 'z', 6);
    fill(1);
    vor_int32 size = -1;
    errors_of([&] { EXPECT_NE(0, vor_tlv_chain_serialize(&chain, end, &size)); });
    EXPECT_EQ("zzzzzz", std::string(reinterpret_cast<char*>(end), 6));
}

// --- Binding ----------------------------------------------------------------

TEST_F(Platform, sap_has_one_owner)
{
    {
        const Bound first(manager_sap);
        EXPECT_TRUE(contains(errors_of([] { EXPECT_EQ(nullptr, Bound(manager_sap)); }), "SAP 7: it is in use"));
        EXPECT_TRUE(fs::exists(socket_file(manager_sap)));
    }
    EXPECT_FALSE(fs::exists(socket_file(manager_sap)));
    {
        const Bound robbed(manager_sap);
        fs::remove(socket_file(manager_sap));
        std::ofstream(socket_file(manager_sap)) << "mine";
    }
    EXPECT_TRUE(contains(errors_of([] { EXPECT_EQ(nullptr, Bound(manager_sap)); }), "is not a socket"));
    EXPECT_EQ(4U, fs::file_size(socket_file(manager_sap)));
}

TEST_F(Platform, dead_owner_is_replaced_by_exactly_one)
{
    ASSERT_NE(nullptr, vorinfra_directory());
    for (int round = 0; round < 500; round++) {
        close(raw_socket(socket_file(manager_sap), SOCK_DGRAM));
        std::vector<std::future<VOR_IPC_HANDLE*>> racers;
        std::latch start(4);
        int owners = 0;
        VOR_IPC_HANDLE* owner = nullptr;
        errors_of([&] {
            for (int i = 0; i < 4; i++) {
                racers.push_back(std::async(std::launch::async, [&] {
                    start.arrive_and_wait();
                    return vor_ipc_bind(manager_sap, 0);
                }));
            }
            for (auto& racer : racers) {
                if (VOR_IPC_HANDLE* const handle = racer.get()) {
                    owner = handle;
                    owners++;
                }
            }
        });
        ASSERT_EQ(1, owners);
        EXPECT_EQ(1, vor_ipc_unbind(owner));
    }
}

TEST_F(Platform, unusable_directories_are_refused)
{
    const auto refusal = [](const std::string& directory) {
        setenv("VORINFRA_DIR", directory.c_str(), 1);
        return errors_of([] {
            EXPECT_EQ(nullptr, vorinfra_directory());
            EXPECT_EQ(nullptr, Bound(manager_sap));
        });
    };
    fs::create_directory(home + "/open");
    fs::permissions(home + "/open", fs::perms(0755));
    fs::create_directory_symlink(home, home + "/link");
    std::ofstream(home + "/file") << "x";
    fs::create_directories(home + "/any/deep");
    fs::permissions(home + "/any", fs::perms(0777));
    fs::create_directory_symlink("any/../any/deep", home + "/way");
    const std::string anyone = "others can rename entries in " + home + "/any (mode 0777, not sticky)";
    const std::pair<std::string, std::string> refusals[] = {
        {home + "/open", "its mode must be 0700, not 0755"},
        {home + "/link", "it is a symbolic link"},
        {home + "/link//", "it is a symbolic link"},
        {home + "/file", "Not a directory"},
        {home + "/not/there", "No such file"},
        {"relative", "must be an absolute path"},
        {home + "/any/deep/run", anyone},
        {home + "/way/run", anyone},
        {home + "/" + std::string(10000, 'd'), "must have at most 94 characters"}};
    for (const auto& [directory, reason] : refusals) {
        EXPECT_TRUE(contains(refusal(directory), reason));
    }
    if (geteuid() == 0) {
        fs::create_directory(home + "/foreign");
        ASSERT_EQ(0, chown((home + "/foreign").c_str(), 65534, 65534));
        EXPECT_TRUE(contains(refusal(home + "/foreign"), "it belongs to user 65534"));
        EXPECT_TRUE(contains(refusal(home + "/foreign/run"), home + "/foreign belongs to user 65534"));
    } else {
        EXPECT_TRUE(contains(refusal("/usr"), "it belongs to user 0"));
    }

    fs::permissions(home + "/any", fs::perms(01777));
    fs::permissions(home + "/any/deep", fs::perms(0770));
    setenv("VORINFRA_DIR", (home + "/way/run").c_str(), 1);
    EXPECT_NE(nullptr, vorinfra_directory());

    // The longest name that works holds the longest socket name.
    const std::string longest = home + "/" + std::string(94 - home.size() - 1, 'd');
    setenv("VORINFRA_DIR", longest.c_str(), 1);
    EXPECT_NE(nullptr, Bound(65535));
    EXPECT_EQ(longest, vorinfra_directory());
    unsetenv("VORINFRA_DIR");
    setenv("XDG_RUNTIME_DIR", home.c_str(), 1);
    EXPECT_EQ(home + "/vorinfra", vorinfra_directory());
    struct stat made;
    ASSERT_EQ(0, stat((home + "/vorinfra").c_str(), &made));
    EXPECT_EQ(0700U, made.st_mode & 07777);
    unsetenv("XDG_RUNTIME_DIR");
}

TEST_F(Platform, invalid_settings_fail_the_bind)
{
    const std::pair<const char*, std::vector<const char*>> settings[] = {
        {"VORINFRA_TIMEOUT_MS", {"soon", "-1", "0", "600001", "99999999999999", "10ms", " 10", "0x"}},
        {"VORINFRA_LOG", {"all", "-1", "0x10000", "8000h"}},
        {"VORINFRA_TIMERS", {"yes", "RUN", "run "}}};
    for (const auto& [name, values] : settings) {
        for (const char* const value : values) {
            setenv(name, value, 1);
            const std::string errors = errors_of([] { EXPECT_EQ(nullptr, Bound(manager_sap)); });
            EXPECT_TRUE(contains(errors, ", not \"" + std::string(value) + '"'));
        }
        setenv(name, "", 1);
        EXPECT_NE(nullptr, Bound(manager_sap)) << name << " empty";
        unsetenv(name);
    }
}

// --- The exchange -----------------------------------------------------------

TEST_F(Platform, answer_is_read_by_offset)
{
    const Bound client(client_sap);
    const Bound manager(manager_sap);
    const auto exchange = [&](const std::string& answer_payload) {
        auto answering = std::async(std::launch::async, [&] {
            const VORINFRA_MESSAGE request = next(manager);
            EXPECT_EQ(1, request.answer_wanted);
            EXPECT_EQ(0, vorinfra_answer(manager, &request, request.id + 0x50000, answer_payload.data(),
                                         static_cast<vor_uint16>(answer_payload.size())));
        });
        Message request;
        Message answer;
        EXPECT_EQ(0, vor_ipc_request_response(client, manager_sap, 0x7003, &request.ref, &answer.ref, 0, 0));
        answering.get();
        EXPECT_EQ(0x57003U, static_cast<VOR_IPC_MSG_HDR*>(answer.ref.data_ptr)->opcode);
        EXPECT_EQ(nullptr, vor_ipc_get_meta_data_ptr(&answer.ref));
        std::string seen;
        for (vor_uint16 offset = 0; const vor_uchar* const byte = answer.payload(offset); offset++) {
            seen += static_cast<char>(*byte);
        }
        EXPECT_EQ(answer_payload, seen);
    };
    exchange(std::string("\5\0\0\0", 4));
    exchange("");
    exchange(std::string(4096, 'r'));
}

TEST_F(Platform, only_the_matching_answer_counts)
{
    const Bound manager(manager_sap);
    const Bound stranger(8);
    std::vector<VORINFRA_MESSAGE> unanswered;
    {
        setenv("VORINFRA_TIMEOUT_MS", "40", 1);
        const Bound impatient(client_sap);
        for (int i = 0; i < 2; i++) {
            Message request;
            Message answer;
            EXPECT_EQ(VORINFRA_NO_ANSWER,
                      vor_ipc_request_response(impatient, manager_sap, 1, &request.ref, &answer.ref, 0, 0));
            EXPECT_EQ(nullptr, answer.payload());
            unanswered.push_back(next(manager));
            EXPECT_EQ(0, vorinfra_answer(manager, &unanswered.back(), 1, "late", 5));
        }
    }
    setenv("VORINFRA_TIMEOUT_MS", "10000", 1);
    const Bound client(client_sap); // as the next process on this SAP
    for (const char* const expected : {"one", "two"}) {
        auto answering = std::async(std::launch::async, [&] {
            const VORINFRA_MESSAGE request = next(manager);
            VORINFRA_MESSAGE other = request;
            other.sequence++;
            vorinfra_answer(manager, &other, 1, "other", 6);
            for (const VORINFRA_MESSAGE& old : unanswered) {
                vorinfra_answer(manager, &old, 1, "old", 4);
            }
            vorinfra_answer(stranger, &request, 1, "foreign", 8);
            send_raw(socket_file(client_sap), "?");
            vorinfra_answer(manager, &request, 1, expected, 4);
            vorinfra_answer(manager, &request, 1, "dup", 4);
        });
        const std::string errors = errors_of([&] {
            Message request;
            Message answer;
            EXPECT_EQ(0, vor_ipc_request_response(client, manager_sap, 1, &request.ref, &answer.ref, 0, 0));
            EXPECT_STREQ(expected, reinterpret_cast<char*>(answer.payload()));
            answering.get();
        });
        EXPECT_TRUE(contains(errors, "SAP 200: 1 bytes dropped, not a message"));
    }
}

TEST_F(Platform, process_stopped_while_binding_is_named)
{
    setenv("VORINFRA_TIMEOUT_MS", "40", 1);
    ASSERT_NE(nullptr, vorinfra_directory());
    const int held = open((home + "/run").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(0, flock(held, LOCK_EX));
    const std::string errors = errors_of([] { EXPECT_EQ(nullptr, Bound(manager_sap)); });
    close(held);
    EXPECT_TRUE(contains(errors, "process " + std::to_string(getpid()) + " ("));
    EXPECT_TRUE(contains(errors, ") has locked the directory " + home + "/run"));
    EXPECT_NE(nullptr, Bound(manager_sap));
}

bool is_answered(VOR_IPC_HANDLE* client)
{
    Message request;
    Message answer;
    return vor_ipc_request_response(client, manager_sap, 1, &request.ref, &answer.ref, 0, 0) == 0;
}

void answer_one(VOR_IPC_HANDLE* manager)
{
    const VORINFRA_MESSAGE request = next(manager);
    vorinfra_answer(manager, &request, 1, nullptr, 0);
}

// Otherwise a neighbour could use up the descriptors of a gateway or of its clients.
TEST_F(Platform, passed_descriptors_are_closed)
{
    setenv("VORINFRA_TIMEOUT_MS", "40", 1);
    const Bound client(client_sap);
    const Bound manager(manager_sap);
    int ends[2];
    ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
    send_raw(socket_file(manager_sap), "?", dup(ends[1]));
    send_raw(socket_file(client_sap), "?", ends[1]);
    errors_of([&] {
        VORINFRA_MESSAGE received;
        EXPECT_EQ(-1, vorinfra_receive(manager, &received));
        EXPECT_FALSE(is_answered(client));
    });
    pollfd polled{ends[0], 0, 0};
    EXPECT_EQ(1, poll(&polled, 1, 0)) << "somebody can still write";
    close(ends[0]);
}

// --- Forks --------------------------------------------------------------------

TEST_F(Platform, endpoint_stays_with_the_process_that_bound_it)
{
    setenv("VORINFRA_TIMEOUT_MS", "200", 1);
    const Bound manager(manager_sap);
    const Bound client(client_sap);
    const std::string errors = errors_of([&] {
        EXPECT_EQ(0, status_of([&] {
                      Message message;
                      const bool refused = !is_answered(client) && errno == EBUSY &&
                                           vor_ipc_send(client, manager_sap, 1, &message.ref, 0, 0) == -1;
                      const bool unbound = vor_ipc_unbind(client) == 1;
                      _exit(refused && unbound && vor_ipc_bind(201, 0) != nullptr ? 0 : 1);
                  }));
    });
    EXPECT_TRUE(
        contains(errors, "SAP 200: vor_ipc_send refused, the SAP belongs to process " + std::to_string(getpid())));
    auto answering = std::async(std::launch::async, [&] { answer_one(manager); });
    EXPECT_TRUE(is_answered(client));
}

TEST_F(Platform, daemon_takes_over_what_its_parent_bound)
{
    const Bound manager(manager_sap);
    int done[2];
    ASSERT_EQ(0, pipe2(done, O_CLOEXEC));
    const pid_t binder = fork();
    if (binder == 0) {
        VOR_IPC_HANDLE* const client = vor_ipc_bind(client_sap, 0);
        if (fork() == 0 && setsid() > 0 && fork() == 0) {
            const bool right = is_answered(client) && vor_ipc_unbind(client) == 1;
            (void)!write(done[1], right ? "1" : "0", 1);
        }
        _exit(0); // and nobody waits for it yet
    }
    close(done[1]);
    answer_one(manager);
    char right = '?';
    EXPECT_EQ(1, read(done[0], &right, 1));
    EXPECT_EQ('1', right);
    EXPECT_FALSE(fs::exists(socket_file(client_sap)));
    waitpid(binder, nullptr, 0);
    close(done[0]);
}

// --- Time ---------------------------------------------------------------------

// A signal shortly before the end must not begin the time again.
TEST_F(Platform, signal_does_not_prolong_a_wait)
{
    setenv("VORINFRA_ROOT", home.c_str(), 1);
    setenv("VORINFRA_TIMEOUT_MS", "400", 1);
    const Bound client(client_sap);
    const Bound manager(manager_sap);
    const int listener = raw_socket(home + "/daemon.socket", SOCK_STREAM);
    ASSERT_EQ(0, listen(listener, 0));
    const int first = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = address_of(home + "/daemon.socket");
    ASSERT_EQ(0, connect(first, reinterpret_cast<const sockaddr*>(&address), sizeof address)); // and no other
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    struct sigaction before;
    sigaction(SIGALRM, &action, &before);
    const auto expect_in_time = [](const char* what, const auto& wait) {
        const auto start = std::chrono::steady_clock::now();
        const itimerval soon{{0, 0}, {0, 350'000}};
        setitimer(ITIMER_REAL, &soon, nullptr);
        wait();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(700)) << what;
    };
    Message message;
    VORINFRA_MESSAGE received;
    char path[] = "/daemon.socket";
    auto* const stream = vor_socket_create(1, 1, 0);
    ASSERT_EQ(0, vor_socket_config_unix(stream, path));
    expect_in_time("connect", [&] { EXPECT_EQ(-1, vor_socket_connect(stream, 1)); });
    expect_in_time("await", [&] { EXPECT_EQ(0, vorinfra_await(manager, &received)); });
    while (vor_ipc_send(client, manager_sap, 1, &message.ref, 0, 0) == 0) {}
    expect_in_time("send", [&] { EXPECT_EQ(-1, vor_ipc_send(client, manager_sap, 1, &message.ref, 0, 0)); });
    sigaction(SIGALRM, &before, nullptr);
    vor_socket_close(stream, 1);
    close(first);
    close(listener);
}

TEST_F(Platform, nothing_waits_forever)
{
    setenv("VORINFRA_TIMEOUT_MS", "40", 1);
    const Bound client(client_sap);
    Message message;
    Message answer;
    EXPECT_EQ(-1, vor_ipc_request_response(client, manager_sap, 1, &message.ref, &answer.ref, 0, 0)) << "no manager";
    const unsigned undelivered = vorinfra_messages_undelivered();
    EXPECT_EQ(0, vor_ipc_send(client, manager_sap, 1, &message.ref, 0, 0)) << "no manager";
    close(raw_socket(socket_file(manager_sap), SOCK_DGRAM));
    EXPECT_EQ(0, vor_ipc_send(client, manager_sap, 1, &message.ref, 0, 0)) << "a manager that died";
    EXPECT_EQ(undelivered + 2, vorinfra_messages_undelivered());

    // A manager that does not receive, and a program whose timer interrupts.
    setenv("VORINFRA_TIMEOUT_MS", "600000", 1); // which answering must never take
    const Bound manager(manager_sap);
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    struct sigaction before;
    sigaction(SIGALRM, &action, &before);
    const itimerval often{{0, 5000}, {0, 5000}};
    const itimerval never{};
    setitimer(ITIMER_REAL, &often, nullptr);
    EXPECT_EQ("", errors_of([&] {
                  EXPECT_EQ(VORINFRA_NO_ANSWER,
                            vor_ipc_request_response(client, manager_sap, 1, &message.ref, &answer.ref, 0, 0));
              }));
    int sent = 0;
    while (vor_ipc_send(client, manager_sap, 1, &message.ref, 0, 0) == 0) {
        sent++;
    }
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &before, nullptr);
    EXPECT_GT(sent, 0);
    EXPECT_EQ(undelivered + 2, vorinfra_messages_undelivered()) << "a full queue refuses";

    const VORINFRA_MESSAGE request = next(manager);
    EXPECT_EQ(1, request.answer_wanted);
    while (vorinfra_answer(manager, &request, 1, nullptr, 0) == 0) {}
    VORINFRA_MESSAGE stray = next(manager); // a one-way message, then an unexpected answer
    errors_of([&] { EXPECT_EQ(-1, vorinfra_answer(manager, &stray, 1, nullptr, 0)); });
    EXPECT_TRUE(contains(errors_of([&] { EXPECT_EQ(-1, vorinfra_receive(client, &stray)); }), "unexpected answer"));
}

} // namespace
