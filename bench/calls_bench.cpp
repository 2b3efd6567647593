// What a call costs on the development platform: the whole road to a manager
// and back, beside a bare exchange of datagrams of the same sizes, both with
// asker and answerer on one processor.
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <device_mgmt.h>
#include <vorinfra_manager.h>

namespace {

constexpr vor_uint16 asker_sap = 100;
constexpr vor_uint16 ntp_sap = 22;
vor_char ntp_server[] = "ntp.north-mast.example.org"; // makes the request 64 bytes on the wire
constexpr std::size_t request_size = 64;
constexpr std::size_t answer_size = 20;

[[noreturn]] void fail(const char* what)
{
    std::perror(what);
    std::exit(1);
}

// A private place for the sockets, gone at the end.
class Directory {
public:
    Directory()
    {
        if (mkdtemp(path_.data()) == nullptr) {
            fail("mkdtemp");
        }
        setenv("VORINFRA_DIR", path_.c_str(), 1);
    }
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
    ~Directory() { std::filesystem::remove_all(path_); }

    sockaddr_un address(const char* name) const
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::snprintf(address.sun_path, sizeof address.sun_path, "%s/%s", path_.c_str(), name);
        return address;
    }

private:
    std::string path_ = "/tmp/vor-bench-XXXXXX";
};

// A child that answers until it is ended; it has bound its socket once this stands.
class Answerer {
public:
    template <class Bind, class Serve>
    Answerer(Bind bind, Serve serve)
    {
        int ready[2];
        if (pipe(ready) != 0 || (child_ = fork()) < 0) {
            fail("the answerer cannot start");
        }
        if (child_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            const auto endpoint = bind();
            if (write(ready[1], "", 1) != 1) {
                _exit(1);
            }
            for (;;) {
                serve(endpoint);
            }
        }
        close(ready[1]);
        char byte;
        if (read(ready[0], &byte, 1) != 1) {
            fail("the answerer did not bind");
        }
        close(ready[0]);
    }
    Answerer(const Answerer&) = delete;
    Answerer& operator=(const Answerer&) = delete;
    ~Answerer()
    {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }

private:
    pid_t child_;
};

void stay_on_one_processor()
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
    if (sched_setaffinity(0, sizeof one, &one) != 0) {
        fail("sched_setaffinity");
    }
}

int bound_socket(const sockaddr_un& address)
{
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0 || bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        fail("bind");
    }
    return descriptor;
}

template <std::size_t size>
bool send_bytes(int descriptor, const sockaddr_un& to, const std::array<char, size>& bytes)
{
    return sendto(descriptor, bytes.data(), size, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to) == size;
}

void bare_datagrams(benchmark::State& state)
{
    const Directory directory;
    const sockaddr_un asker = directory.address("asker");
    const sockaddr_un answerer = directory.address("answerer");
    const std::array<char, request_size> request{};
    const std::array<char, answer_size> answer{};
    std::array<char, VORINFRA_DATA_MAX> buffer;
    const int descriptor = bound_socket(asker);
    const Answerer child([&] { return bound_socket(answerer); },
                         [&](int own) {
                             if (recv(own, buffer.data(), buffer.size(), 0) != request_size ||
                                 !send_bytes(own, asker, answer)) {
                                 _exit(1);
                             }
                         });
    while (state.KeepRunning()) {
        if (!send_bytes(descriptor, answerer, request) ||
            recv(descriptor, buffer.data(), buffer.size(), 0) != answer_size) {
            state.SkipWithError("no answer");
            break;
        }
    }
    close(descriptor);
}

void answered_call(benchmark::State& state)
{
    const Directory directory;
    const Answerer manager([] { return vor_ipc_bind(ntp_sap, 0); },
                           [](VOR_IPC_HANDLE* handle) {
                               static VORINFRA_MESSAGE message;
                               constexpr vor_int32 accepted = 0;
                               pollfd waiting{vorinfra_descriptor(handle), POLLIN, 0};
                               if (poll(&waiting, 1, -1) == 1 && vorinfra_receive(handle, &message) == 1) {
                                   if (message.payload_size + sizeof(VOR_IPC_MSG_HDR) != request_size) {
                                       std::fputs("the two exchanges differ in size\n", stderr);
                                       _exit(1);
                                   }
                                   vorinfra_answer(handle, &message, message.id, &accepted, sizeof accepted);
                               }
                           });
    if (vor_cfg_create_ipc_endpoint(asker_sap) != 0) {
        state.SkipWithError("no endpoint");
        return;
    }
    while (state.KeepRunning()) {
        if (vor_set_ntp_server(ntp_server, 123, 1) != 0) {
            state.SkipWithError("not accepted");
            break;
        }
    }
    vor_cfg_remove_ipc_endpoint();
}

void serialized_chain(benchmark::State& state)
{
    std::array<vor_uchar, 64> payload;
    vor_int32 size = 0;
    while (state.KeepRunning()) {
        TLV_CHAIN chain;
        vor_tlv_chain_init(&chain);
        vor_tlv_chain_add_str(&chain, 1, ntp_server);
        vor_tlv_chain_add_vor_int32(&chain, 2, 123);
        vor_tlv_chain_add_vor_int16(&chain, 4, 1);
        vor_tlv_chain_serialize(&chain, payload.data(), &size);
        vor_tlv_chain_free(&chain, 0);
        benchmark::DoNotOptimize(payload);
    }
}

void konfd_command(benchmark::State& state)
{
    std::string ssid = "ssid";
    std::string network = "north-mast";
    std::string interface = "interface";
    std::string wlan = "wlan0";
    VOR_CFG_PROTO* const query = vor_cfg_proto_init();
    vor_cfg_proto_set_op(query, 1);
    vor_cfg_proto_set_line_string(query, ssid.data(), network.data());
    vor_cfg_proto_set_pattern_string(query, 2, ssid.data(), nullptr);
    vor_cfg_proto_append_path_elm(query, interface.data(), wlan.data());
    while (state.KeepRunning()) {
        vor_int32 length = 0;
        vor_char* const command = vor_cfg_proto_get_command(query, &length);
        benchmark::DoNotOptimize(command);
        vor_free(command);
    }
    vor_cfg_proto_cleanup(query);
}

BENCHMARK(bare_datagrams)->UseRealTime();
BENCHMARK(answered_call)->UseRealTime();
BENCHMARK(serialized_chain);
BENCHMARK(konfd_command);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    stay_on_one_processor();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
