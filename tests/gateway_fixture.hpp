// gateway_fixture.hpp: tests that are a gateway's clients themselves, each in a workplace of its own.
#pragma once

#include <cstring>

#include "text/json.hpp"

#include "platform_fixture.hpp"
#include "sockets/unix_socket.hpp"

class GatewayTest : public testing::Test {
protected:
    GatewayTest() { place.enter(); }

    std::string in_place(const std::string& name) const { return (place.path() / name).string(); }
    std::string held(const std::string& name) const { return processes::contents(in_place(name)); }
    vor::Json state() const { return vor::Json::parse(place.run("vorsim show --json").text); }

    const processes::Workplace place;
    const std::string konfd_path = in_place("root/tmp/konfd.socket");
};

// Sends a request without payload, by default for the temperature; the first word of the answer.
inline int ask(VOR_IPC_HANDLE* front_end, vor_uint16 sap = 2, vor_uint32 id = 0x2021)
{
    Message request;
    Message response;
    int word = -1;
    if (vor_ipc_request_response(front_end, sap, id, &request.ref, &response.ref, 0, 0) == 0) {
        std::memcpy(&word, response.payload(), sizeof word);
    }
    return word;
}

// A connection to one of the gateway's stream sockets.
class Stream {
public:
    explicit Stream(const std::string& path) : socket_(vorsim::sockets::connect_to(path))
    {
        EXPECT_GE(socket_.get(), 0) << path;
    }

    void send(const std::string& bytes) const { ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL); }
    void send_no_more() const { shutdown(socket_.get(), SHUT_WR); }
    int get() const { return socket_.get(); }
    // A line, or what came before the connection's end.
    std::string line() const
    {
        std::string line;
        char byte = 0;
        pollfd waiting{socket_.get(), POLLIN, 0};
        while (!line.ends_with('\n') && poll(&waiting, 1, 30'000) == 1 && recv(socket_.get(), &byte, 1, 0) == 1) {
            line += byte;
        }
        return line;
    }

private:
    vorsim::sockets::Descriptor socket_;
};
