// Several threads using the platform at once; run under ThreadSanitizer.
#include <array>
#include <atomic>
#include <cstring>
#include <future>
#include <thread>
#include <vector>

#include "platform_fixture.hpp"

namespace {

constexpr int rounds = 40;
constexpr vor_uint16 managers = 3;

// A manager that answers each request with its own bytes.
class Echo {
public:
    explicit Echo(vor_uint16 sap) : endpoint_(sap), thread_([this] { serve(); }) {}
    Echo(const Echo&) = delete;
    Echo& operator=(const Echo&) = delete;
    ~Echo()
    {
        done_ = true;
        thread_.join();
    }

private:
    void serve()
    {
        VORINFRA_MESSAGE message;
        pollfd polled{vorinfra_descriptor(endpoint_), POLLIN, 0};
        while (!done_) {
            if (poll(&polled, 1, 20) == 1 && vorinfra_receive(endpoint_, &message) == 1 && message.answer_wanted) {
                vorinfra_answer(endpoint_, &message, message.id, message.payload, message.payload_size);
            }
        }
    }

    const Bound endpoint_;
    std::atomic<bool> done_{false};
    std::thread thread_;
};

// A client's exchanges on an endpoint of its own; how many were answered with what was asked.
int exchanges(vor_uint16 sap)
{
    int right = 0;
    for (int round = 0; round < rounds; round++) {
        const Bound client(sap);
        for (vor_uint16 manager = 1; manager <= managers; manager++) {
            Message request;
            Message response;
            TLV_CHAIN chain;
            vor_int32 size = 0;
            vor_tlv_chain_init(&chain);
            vor_tlv_chain_add_vor_int32(&chain, sap, round);
            vor_tlv_chain_serialize(&chain, request.payload(), &size);
            vor_ipc_send(client, 99, 2, &request.ref, 0, 0); // no such manager
            const vor_int32 result = vor_ipc_request_response(client, manager, 1, &request.ref, &response.ref,
                                                              static_cast<vor_uint16>(size), 0);
            const void* const answer = response.payload();
            right += result == 0 && answer != nullptr &&
                     std::memcmp(answer, request.payload(), static_cast<size_t>(size)) == 0;
        }
    }
    return right;
}

constexpr int all = rounds * managers;

// Each keeps its own buffers while the others bind and unbind, which frees theirs.
TEST_F(Platform, threads_with_own_endpoints)
{
    const std::array<Echo, managers> echoes{Echo(1), Echo(2), Echo(3)};
    std::array<int, 4> right{};
    std::vector<std::thread> clients;
    for (size_t client = 0; client < right.size(); client++) {
        clients.emplace_back([&, client] { right[client] = exchanges(static_cast<vor_uint16>(200 + client)); });
    }
    std::thread others([] {
        const Bound own(300);
        for (int round = 0; round < rounds; round++) {
            vor_ipc_debug(own, 1); // a trace on and off
            vor_timer_start(vor_timer_create(0, nullptr, nullptr), 1000, 0);
            vorinfra_timers(nullptr, 0);
            vorinfra_buffers_taken();
            vorinfra_messages_undelivered();
            vor_dbg_log(1, "nothing");
        }
    });
    for (std::thread& client : clients) {
        client.join();
    }
    others.join();
    EXPECT_EQ((std::array{all, all, all, all}), right);
}

TEST_F(Platform, second_thread_on_an_endpoint_is_refused)
{
    const Bound client(client_sap);
    const Bound manager(manager_sap);
    const auto exchange = [&] {
        Message request;
        Message response;
        const vor_int32 result = vor_ipc_request_response(client, manager_sap, 1, &request.ref, &response.ref, 0, 0);
        return result == 0 ? *response.payload() : result;
    };
    auto first = std::async(std::launch::async, exchange);
    const VORINFRA_MESSAGE request = next(manager);
    const std::string errors = errors_of([&] {
        Message message;
        EXPECT_EQ(VORINFRA_NOT_SENT, exchange());
        EXPECT_EQ(EBUSY, errno);
        EXPECT_EQ(-1, vor_ipc_send(client, manager_sap, 2, &message.ref, 0, 0));
        EXPECT_EQ(0, vor_ipc_unbind(client));
    });
    EXPECT_TRUE(contains(errors, "refused, thread ")) << errors;
    VORINFRA_MESSAGE none;
    EXPECT_EQ(0, vorinfra_receive(manager, &none));
    EXPECT_EQ(0, vorinfra_answer(manager, &request, 1, "\5", 1));
    EXPECT_EQ(5, first.get());
}

TEST_F(Platform, thread_that_ended_does_not_keep_its_endpoint)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer takes the stack of a cancelled thread for one in use";
#endif
    VOR_IPC_HANDLE* const client = vor_ipc_bind(client_sap, 0);
    const Bound manager(manager_sap);
    pthread_t thread;
    const auto begin = [](void* handle) -> void* {
        VOR_IPC_MSG_REF request;
        VOR_IPC_MSG_REF response;
        vor_ipc_get_buffer(&request);
        vor_ipc_get_buffer(&response);
        vor_ipc_request_response(static_cast<VOR_IPC_HANDLE*>(handle), manager_sap, 1, &request, &response, 0, 0);
        return nullptr;
    };
    ASSERT_EQ(0, pthread_create(&thread, nullptr, begin, client));
    next(manager); // it waits for its answer now
    pthread_cancel(thread);
    pthread_join(thread, nullptr);
    EXPECT_EQ(1, vor_ipc_unbind(client));
}

TEST_F(Platform, buffer_survives_unbind_in_another_thread)
{
    const Bound own(client_sap);
    VOR_IPC_HANDLE* newest = nullptr;
    std::thread([&newest] { newest = vor_ipc_bind(201, 0); }).join();
    Message message;
    EXPECT_EQ(1, vor_ipc_unbind(newest));
    EXPECT_NE(nullptr, message.payload());
}

} // namespace
