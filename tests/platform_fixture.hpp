// platform_fixture.hpp: both sides of the development platform, each test in a
// private directory of its own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
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

// A plain socket at a path, as a process that cares for nothing makes it.
inline int raw_socket(const std::string& path, int type)
{
    const int descriptor = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    const sockaddr_un address = address_of(path);
    EXPECT_EQ(0, bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address)) << path;
    return descriptor;
}

// A datagram of any bytes, from nobody.
inline void send_raw(const std::string& path, const std::string& bytes)
{
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un to = address_of(path);
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
              sendto(descriptor, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to));
    close(descriptor);
}
