// platform_fixture.hpp: both sides of the development platform, each test in a
// private directory of its own.
#pragma once

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <vorinfra_inspect.h>
#include <vorinfra_manager.h>

#include "processes.hpp"

namespace fs = std::filesystem;

constexpr vor_uint16 client_sap = 200;
constexpr vor_uint16 manager_sap = 7;

inline testing::AssertionResult contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << '"' << text << "\" lacks \"" << part << '"';
}

template <class Action>
std::string errors_of(Action action)
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

class Bound {
public:
    explicit Bound(vor_uint16 sap) : handle_(vor_ipc_bind(sap, 0)) {}
    Bound(const Bound&) = delete;
    Bound& operator=(const Bound&) = delete;
    ~Bound() { vor_ipc_unbind(handle_); }
    operator VOR_IPC_HANDLE*() const { return handle_; }

private:
    VOR_IPC_HANDLE* handle_;
};

struct Message {
    VOR_IPC_MSG_REF ref;
    Message() { EXPECT_EQ(0, vor_ipc_get_buffer(&ref)); }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    ~Message()
    {
        if (ref.data_ptr != nullptr) {
            vor_ipc_drop_msg_buf(&ref);
        }
    }
    vor_uchar* payload(vor_uint16 offset = 0) { return static_cast<vor_uchar*>(vor_ipc_get_payload_ptr(&ref, offset)); }
};

// The next message of a manager, waited for.
inline VORINFRA_MESSAGE next(VOR_IPC_HANDLE* handle)
{
    pollfd polled{vorinfra_descriptor(handle), POLLIN, 0};
    poll(&polled, 1, 10000);
    VORINFRA_MESSAGE message{};
    EXPECT_EQ(1, vorinfra_receive(handle, &message));
    return message;
}

class Platform : public testing::Test {
protected:
    Platform()
    {
        for (const char* variable : {"VORINFRA_TIMEOUT_MS", "VORINFRA_LOG", "VORINFRA_TIMERS", "VORINFRA_ROOT"}) {
            unsetenv(variable);
        }
        setenv("VORINFRA_DIR", (home + "/run").c_str(), 1);
    }
    void TearDown() override { EXPECT_EQ(0U, vorinfra_buffers_taken()); }
    std::string socket_file(vor_uint16 sap) const { return home + "/run/sap-" + std::to_string(sap); }

    const processes::TemporaryDirectory place;
    std::string home = place.path().string();
    TLV_CHAIN chain{};
};

inline sockaddr_un address_of(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

// A plain socket bound to a path, without the platform.
inline int raw_socket(const std::string& path, int type)
{
    const int descriptor = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    const sockaddr_un address = address_of(path);
    EXPECT_EQ(0, bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address)) << path;
    return descriptor;
}

// Any bytes to where a socket is connected, with a descriptor that is closed here.
inline void pass(int socket, std::string bytes, int descriptor)
{
    iovec part{bytes.data(), bytes.size()};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof descriptor)]{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (descriptor >= 0) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        *CMSG_FIRSTHDR(&message) = {CMSG_LEN(sizeof descriptor), SOL_SOCKET, SCM_RIGHTS};
        memcpy(CMSG_DATA(CMSG_FIRSTHDR(&message)), &descriptor, sizeof descriptor);
    }
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()), sendmsg(socket, &message, 0));
    close(descriptor);
}

// A datagram of any bytes from an unbound socket.
inline void send_raw(const std::string& path, const std::string& bytes, int descriptor = -1)
{
    const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un to = address_of(path);
    EXPECT_EQ(0, connect(sender, reinterpret_cast<const sockaddr*>(&to), sizeof to));
    pass(sender, bytes, descriptor);
    close(sender);
}

// Runs an action in a child process; its wait status.
inline int status_of(const std::function<void()>& action)
{
    const pid_t child = fork();
    if (child == 0) {
        action();
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

// A command, its exit code and a part of its output.
struct Printed {
    std::string command;
    int exit_code;
    const char* text;
};

inline void expect_said(const processes::Workplace& place, std::initializer_list<Printed> all)
{
    for (const Printed& each : all) {
        const processes::Output output = place.run(each.command);
        EXPECT_EQ(each.exit_code, output.exit_code) << each.command;
        EXPECT_TRUE(contains(output.text, each.text)) << each.command;
    }
}
