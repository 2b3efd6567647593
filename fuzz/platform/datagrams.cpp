// Arbitrary datagrams to a client that waits for its answer, and to a manager.
#include <atomic>
#include <optional>
#include <thread>
#include <vector>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <vorinfra_inspect.h>
#include <vorinfra_manager.h>

#include "input.hpp"
#include "processes.hpp"

using namespace fuzz;

namespace {

constexpr vor_uint16 client_sap = 200;
constexpr vor_uint16 manager_sap = 7;
constexpr vor_uint16 stranger_sap = 8;
constexpr vor_uint16 answer_bit = 0x8000;
constexpr std::size_t most_waiting = 6; // more than a queue holds would have to wait

using Datagram = std::vector<std::uint8_t>;

Datagram datagram(const VOR_IPC_MSG_HDR& header, Bytes data)
{
    const auto* const from = reinterpret_cast<const std::uint8_t*>(&header);
    Datagram bytes(from, from + sizeof header);
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

std::optional<VOR_IPC_MSG_HDR> message_in(const Datagram& bytes)
{
    VOR_IPC_MSG_HDR header;
    if (bytes.size() < sizeof header || bytes.size() > sizeof header + VORINFRA_DATA_MAX) {
        return {};
    }
    std::copy_n(bytes.begin(), sizeof header, reinterpret_cast<std::uint8_t*>(&header));
    const std::size_t data = std::size_t{header.meta_data_sz} + header.payload_sz;
    return bytes.size() == sizeof header + data ? std::optional(header) : std::nullopt;
}

class Site {
public:
    Site()
    {
        setenv("VORINFRA_DIR", (place_.path() / "run").c_str(), 1);
        setenv("VORINFRA_TIMEOUT_MS", "10000", 1);
        client = vor_ipc_bind(client_sap, 0);
        stranger = vor_ipc_bind(stranger_sap, 0);
        const sockaddr_un own = address_of(manager_sap);
        require(client != nullptr && stranger != nullptr &&
                    bind(manager_, reinterpret_cast<const sockaddr*>(&own), sizeof own) == 0,
                "the directory can be used");
        std::thread answering([this] { // only the first request reveals its sequence number
            VOR_IPC_MSG_HDR header;
            recv(manager_, &header, sizeof header, 0);
            sequence_ = header.flag;
            send(client_sap, datagram({manager_sap, client_sap, 1, answer(), 0, 0}, {}));
        });
        VOR_IPC_MSG_REF request;
        VOR_IPC_MSG_REF response;
        require(exchange(request, response) == 0, "an answer comes");
        answering.join();
        give_back(request, response);
    }

    void send(vor_uint16 sap, const Datagram& bytes)
    {
        const sockaddr_un to = address_of(sap);
        require(sendto(manager_, bytes.data(), bytes.size(), MSG_DONTWAIT, reinterpret_cast<const sockaddr*>(&to),
                       sizeof to) == static_cast<ssize_t>(bytes.size()),
                "there is room");
    }

    // The flag that the answer to the next request has.
    vor_uint16 next_answer()
    {
        sequence_ = static_cast<vor_uint16>(sequence_ == 0x7fff ? 1 : sequence_ + 1);
        return answer();
    }

    vor_int32 exchange(VOR_IPC_MSG_REF& request, VOR_IPC_MSG_REF& response)
    {
        require(vor_ipc_get_buffer(&request) == 0 && vor_ipc_get_buffer(&response) == 0, "there are buffers");
        std::memset(vor_ipc_get_payload_ptr(&response, 0), 0, 64); // what the buffer held before is not an answer
        return vor_ipc_request_response(client, manager_sap, 1, &request, &response, 0, 0);
    }

    static void give_back(VOR_IPC_MSG_REF& request, VOR_IPC_MSG_REF& response)
    {
        vor_ipc_drop_msg_buf(&request);
        vor_ipc_drop_msg_buf(&response);
    }

    // Discards all datagrams that are left.
    void clear() const
    {
        std::uint8_t byte;
        for (const int descriptor : {manager_, vorinfra_descriptor(client), vorinfra_descriptor(stranger)}) {
            while (recv(descriptor, &byte, sizeof byte, MSG_DONTWAIT) >= 0) {}
        }
    }

    VOR_IPC_HANDLE* client;
    VOR_IPC_HANDLE* stranger;

private:
    vor_uint16 answer() const { return static_cast<vor_uint16>(answer_bit | sequence_); }

    static sockaddr_un address_of(vor_uint16 sap)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::snprintf(address.sun_path, sizeof address.sun_path, "%s/sap-%u", vorinfra_directory(), sap);
        return address;
    }

    const processes::TemporaryDirectory place_;
    const int manager_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    std::atomic<vor_uint16> sequence_{0};
};

bool is_refusal(const VOR_IPC_MSG_HDR& header, const Datagram& bytes)
{
    constexpr std::string_view refused = "refused";
    return header.meta_data_sz == refused.size() && header.payload_sz == 0 &&
           std::equal(refused.begin(), refused.end(), bytes.begin() + sizeof header);
}

// The first datagram that answers the request is the answer; no byte of any other is seen.
void check_answer(VOR_IPC_MSG_REF& response, const VOR_IPC_MSG_HDR& header, const Datagram& bytes)
{
    require(response.meta_data_sz == header.meta_data_sz && response.payload_sz == header.payload_sz,
            "the answer is the first with the request's number");
    const auto* const sent = bytes.data() + sizeof header;
    const auto* const meta_data = static_cast<vor_uchar*>(vor_ipc_get_meta_data_ptr(&response));
    require((meta_data != nullptr) == (header.meta_data_sz != 0), "there is meta-data where some was sent");
    require(header.payload_sz != 0 || vor_ipc_get_payload_ptr(&response, 0) == nullptr, "nothing sent is nothing");
    if (header.payload_sz == 0) {
        return;
    }
    const auto* const payload = static_cast<vor_uchar*>(vor_ipc_get_payload_ptr(&response, 0));
    require(payload != nullptr && reinterpret_cast<std::uintptr_t>(payload) % 8 == 0, "a payload is on a boundary");
    require(std::equal(payload, payload + header.payload_sz, sent + header.meta_data_sz), "the payload is as sent");
    require(vor_ipc_get_payload_ptr(&response, header.payload_sz) == nullptr, "there is no more than was sent");
    require(std::all_of(payload + header.payload_sz, payload + header.payload_sz + 4,
                        [](vor_uchar byte) { return byte == 0xa5; }),
            "bytes that were not sent are not a status");
}

// What a manager receives of the same datagrams: each message once, in order, as it was sent.
void check_received(Site& site, const std::vector<Datagram>& datagrams)
{
    for (const Datagram& bytes : datagrams) {
        site.send(stranger_sap, bytes);
    }
    for (const Datagram& bytes : datagrams) {
        VORINFRA_MESSAGE message;
        const int received = vorinfra_receive(site.stranger, &message);
        const auto header = message_in(bytes);
        require(received == (header && (header->flag & answer_bit) == 0 ? 1 : -1),
                "a message is received, garbage not");
        if (received == 1) {
            require(message.id == header->opcode && message.source == header->ipc_src_id, "it is the one sent");
            require(message.payload_size == header->payload_sz && message.meta_data_size == header->meta_data_sz &&
                        std::equal(bytes.begin() + sizeof *header, bytes.end(), message.meta_data),
                    "all of it");
            require(message.payload == message.meta_data + message.meta_data_size, "the payload is behind");
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Site site;
    Input input(data, size);
    const vor_uint16 flag = site.next_answer();
    std::vector<Datagram> datagrams;
    while (!input.empty() && datagrams.size() < most_waiting) {
        const std::uint8_t as_answer = input.byte(); // bits: which fields are corrected
        const auto length = input.value<vor_uint16>();
        Bytes bytes = input.take(length % 5000);
        Datagram raw(bytes.begin(), bytes.end());
        VOR_IPC_MSG_HDR header{};
        if (raw.size() >= sizeof header) {
            std::copy_n(raw.begin(), sizeof header, reinterpret_cast<std::uint8_t*>(&header));
            bytes = bytes.subspan(sizeof header);
            header.ipc_src_id = (as_answer & 1) != 0 ? manager_sap : header.ipc_src_id;
            header.flag = (as_answer & 2) != 0 ? flag : header.flag;
            if ((as_answer & 4) != 0) {
                header.meta_data_sz = static_cast<vor_uint16>(std::min<std::size_t>(header.meta_data_sz, bytes.size()));
                header.payload_sz = static_cast<vor_uint16>(bytes.size() - header.meta_data_sz);
            }
            raw = datagram(header, bytes);
        }
        datagrams.push_back(raw);
    }
    datagrams.push_back(datagram({manager_sap, client_sap, 1, flag, 0, 0}, {}));

    for (const Datagram& bytes : datagrams) {
        site.send(client_sap, bytes);
    }
    VOR_IPC_MSG_REF request;
    VOR_IPC_MSG_REF response;
    const vor_int32 result = site.exchange(request, response);
    for (const Datagram& bytes : datagrams) {
        const auto header = message_in(bytes);
        if (header && header->flag == flag && header->ipc_src_id == manager_sap) {
            require(result == (is_refusal(*header, bytes) ? VORINFRA_NOT_SENT : 0), "the answer is found");
            if (result == 0) {
                check_answer(response, *header, bytes);
            }
            break;
        }
    }
    site.give_back(request, response);
    require(vorinfra_buffers_taken() == 0, "no buffer is kept");
    site.clear();
    check_received(site, datagrams);
    site.clear();
    return 0;
}
