// What a call costs on the development platform: the whole road to a manager
// and back, beside other roads for the same sizes, asker and answerer on one
// processor.
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef WITH_SD_BUS
#include <systemd/sd-bus.h>
#endif

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

    const std::string& path() const { return path_; }
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

// A child that answers until it is ended; its socket is bound when this returns.
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

// A program that runs until this goes; what it prints goes to a file.
class Process {
public:
    Process(std::vector<std::string> command, const char* output) : output_(output)
    {
        const int file = open(output, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        if (file < 0 || (child_ = fork()) < 0) {
            fail("a program cannot start");
        }
        if (child_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            dup2(file, STDOUT_FILENO);
            std::vector<char*> words;
            for (std::string& word : command) {
                words.push_back(word.data());
            }
            words.push_back(nullptr);
            execvp(words[0], words.data());
            _exit(127);
        }
        close(file);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process()
    {
        if (!ended_) {
            kill(child_, SIGKILL);
            waitpid(child_, nullptr, 0);
        }
    }

    // It has printed its first line, and has not ended.
    bool is_ready()
    {
        std::string line;
        while (!ended_ && !std::getline(std::ifstream(output_), line)) {
            ended_ = waitpid(child_, nullptr, WNOHANG) == child_;
            usleep(1000);
        }
        return !ended_;
    }

private:
    pid_t child_;
    std::string output_;
    bool ended_ = false;
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

// --- Roads -----------------------------------------------------------------------

using Request = std::array<char, request_size>;
using Answer = std::array<char, answer_size>;

int bound_socket(const sockaddr_un& address, int type = SOCK_DGRAM)
{
    const int descriptor = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    if (descriptor < 0 || bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        fail("bind");
    }
    return descriptor;
}

bool wait_for(int descriptor)
{
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, -1) == 1;
}

template <class Bytes>
bool send_to(int descriptor, const sockaddr_un& to, const Bytes& bytes)
{
    return sendto(descriptor, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to) ==
           static_cast<ssize_t>(bytes.size());
}

template <class Bytes>
bool receive(int descriptor, Bytes& bytes)
{
    return recv(descriptor, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size());
}

template <class Exchange>
void repeat(benchmark::State& state, Exchange exchange)
{
    while (state.KeepRunning()) {
        if (!exchange()) {
            state.SkipWithError("no answer");
            return;
        }
    }
}

// Datagrams to a path, each side in two system calls; with `polls` in three.
void datagrams(benchmark::State& state, bool polls)
{
    const Directory directory;
    const sockaddr_un asker = directory.address("asker");
    const sockaddr_un answerer = directory.address("answerer");
    Request request{};
    Answer answer{};
    const int descriptor = bound_socket(asker);
    const Answerer child([&] { return bound_socket(answerer); },
                         [&](int own) {
                             if ((polls && !wait_for(own)) || !receive(own, request) || !send_to(own, asker, answer)) {
                                 _exit(1);
                             }
                         });
    repeat(state, [&] {
        return send_to(descriptor, answerer, request) && (!polls || wait_for(descriptor)) &&
               receive(descriptor, answer);
    });
    close(descriptor);
}

// A connected pair: the kernel looks nothing up.
void packets(benchmark::State& state, bool polls)
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        fail("socketpair");
    }
    Request request{};
    Answer answer{};
    const Answerer child([&] { return ends[1]; },
                         [&](int own) {
                             if ((polls && !wait_for(own)) || !receive(own, request) ||
                                 send(own, answer.data(), answer.size(), 0) < 0) {
                                 _exit(1);
                             }
                         });
    repeat(state, [&] {
        return send(ends[0], request.data(), request.size(), 0) > 0 && (!polls || wait_for(ends[0])) &&
               receive(ends[0], answer);
    });
    close(ends[0]);
    close(ends[1]);
}

#ifdef WITH_SD_BUS
constexpr char bus_name[] = "org.example.Manager";
constexpr char bus_path[] = "/manager";

int answer_call(sd_bus_message* call, void*, sd_bus_error*)
{
    return sd_bus_reply_method_return(call, "i", 0);
}

const sd_bus_vtable methods[] = {SD_BUS_VTABLE_START(0),
                                 SD_BUS_METHOD("Set", "sui", "i", answer_call, SD_BUS_VTABLE_UNPRIVILEGED),
                                 SD_BUS_VTABLE_END};

void serve(sd_bus* bus)
{
    while (sd_bus_process(bus, nullptr) > 0) {}
    sd_bus_wait(bus, UINT64_MAX);
}

void call_over(benchmark::State& state, sd_bus* bus, const char* name)
{
    repeat(state, [&] {
        sd_bus_message* reply = nullptr;
        const int result =
            sd_bus_call_method(bus, name, bus_path, bus_name, "Set", nullptr, &reply, "sui", ntp_server, 123U, 1);
        sd_bus_message_unref(reply);
        return result >= 0;
    });
    sd_bus_flush_close_unref(bus);
}

sd_bus* bus_on(int descriptor, bool server)
{
    sd_bus* bus = nullptr;
    sd_id128_t id{};
    if (sd_bus_new(&bus) < 0 || sd_bus_set_fd(bus, descriptor, descriptor) < 0 ||
        (server && sd_bus_set_server(bus, 1, id) < 0) || sd_bus_set_anonymous(bus, 1) < 0 || sd_bus_start(bus) < 0) {
        fail("sd-bus");
    }
    return bus;
}

void sd_bus_directly(benchmark::State& state)
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        fail("socketpair");
    }
    const Answerer child(
        [&] {
            sd_bus* const bus = bus_on(ends[1], true);
            sd_bus_add_object_vtable(bus, nullptr, bus_path, bus_name, methods, nullptr);
            return bus;
        },
        serve);
    call_over(state, bus_on(ends[0], false), nullptr);
}

sd_bus* bus_at(const std::string& address)
{
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0 || sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0) {
        fail("sd-bus");
    }
    return bus;
}

void sd_bus_over_a_bus(benchmark::State& state)
{
    const Directory directory;
    const std::string address = std::string("unix:path=") + directory.address("bus").sun_path;
    Process daemon({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1", "--address=" + address},
                   directory.address("output").sun_path);
    if (!daemon.is_ready()) {
        state.SkipWithError("no dbus-daemon");
        return;
    }
    const Answerer child(
        [&] {
            sd_bus* const bus = bus_at(address);
            sd_bus_add_object_vtable(bus, nullptr, bus_path, bus_name, methods, nullptr);
            sd_bus_request_name(bus, bus_name, 0);
            return bus;
        },
        serve);
    call_over(state, bus_at(address), bus_name);
}
#endif

// --- Ours -------------------------------------------------------------------------

void call_repeatedly(benchmark::State& state)
{
    if (vor_cfg_create_ipc_endpoint(asker_sap) != 0) {
        state.SkipWithError("no endpoint");
        return;
    }
    repeat(state, [] { return vor_set_ntp_server(ntp_server, 123, 1) == 0; });
    vor_cfg_remove_ipc_endpoint();
}

Answerer smallest_manager()
{
    return {[] { return vor_ipc_bind(ntp_sap, 0); },
            [](VOR_IPC_HANDLE* handle) {
                static VORINFRA_MESSAGE message;
                constexpr vor_int32 accepted = 0;
                if (vorinfra_await(handle, &message) == 1) {
                    if (message.payload_size + sizeof(VOR_IPC_MSG_HDR) != request_size) {
                        std::fputs("the two exchanges differ in size\n", stderr);
                        _exit(1);
                    }
                    vorinfra_answer(handle, &message, message.id, &accepted, sizeof accepted);
                }
            }};
}

void to_the_smallest_manager(benchmark::State& state)
{
    const Directory directory;
    const Answerer manager = smallest_manager();
    call_repeatedly(state);
}

void call_vorsim(benchmark::State& state, const Directory& directory, const std::vector<std::string>& options)
{
    std::vector<std::string> command{VORSIM};
    command.insert(command.end(), options.begin(), options.end());
    Process gateway(command, directory.address("output").sun_path);
    if (!gateway.is_ready()) {
        state.SkipWithError("vorsim does not start");
        return;
    }
    call_repeatedly(state);
}

void to_vorsim(benchmark::State& state, bool journal)
{
    const Directory directory;
    call_vorsim(state, directory,
                journal ? std::vector<std::string>{"--journal", directory.address("journal").sun_path}
                        : std::vector<std::string>());
}

void via_vorsim(benchmark::State& state)
{
    const Directory real;
    const Answerer manager = smallest_manager();
    const Directory directory;
    call_vorsim(state, directory, {"--via", "ntpmgr=" + real.path()});
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

BENCHMARK_CAPTURE(packets, connected, false)->UseRealTime();
BENCHMARK_CAPTURE(packets, connected_polled, true)->UseRealTime();
BENCHMARK_CAPTURE(datagrams, by_path, false)->UseRealTime();
BENCHMARK_CAPTURE(datagrams, by_path_polled, true)->UseRealTime();
BENCHMARK(to_the_smallest_manager)->UseRealTime();
BENCHMARK_CAPTURE(to_vorsim, without_journal, false)->UseRealTime();
BENCHMARK_CAPTURE(to_vorsim, with_journal, true)->UseRealTime();
BENCHMARK(via_vorsim)->UseRealTime();
#ifdef WITH_SD_BUS
BENCHMARK(sd_bus_directly)->UseRealTime();
BENCHMARK(sd_bus_over_a_bus)->UseRealTime();
#endif
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
