// soak [MINUTES [SEED]]: all calls at random, by several clients at once, against a gateway with faults. Clients are
// killed during calls, gateways at any time, and both are restarted.
#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <random>
#include <thread>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/core.h>

#include "client.hpp"
#include "processes.hpp"
#include "text/text.hpp"

namespace {

using namespace soak;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds gateway_lives{7000};
constexpr milliseconds grace{60'000}; // for the clients, at the end

// `*_*` excludes messages that vorsim refused, and so the marks.
constexpr const char* rules[] = {
    "any *_* chance 0.15%: never",
    "any *_* chance 0.15%: late 2s",
    "any *_* chance 0.1%: die 30ms",
    "any *_* chance 0.5%: swapped",
    "any *_* chance 2%: late 15ms",
    "any *_* chance 3%: doubled",
    "any *_* chance 2%: refuse",
    "any *_* chance 3%: id low",
    "any *_* chance 3%: id high",
    "any *_* chance 3%: no payload",
    "any *_* chance 3%: short 2 bytes",
    "any *_* chance 3%: status 1",
    "konfd chance 1%: never",
    "konfd chance 5%: hang up",
    "konfd chance 5%: split",
    "konfd chance 5%: answer \"-e\"",
    "konfd chance 5%: answer \"-o and more\"",
    "konfd chance 5%: answer \"+o\"",
};
constexpr int statuses =
    40; // further rules, each with its own status, which shows an answer that reaches the wrong call

void write_rules(const std::string& file)
{
    std::ofstream stream(file);
    for (const char* const rule : rules) {
        stream << rule << '\n';
    }
    for (int status = 0; status < statuses; ++status) {
        stream << fmt::format("any *_* chance 1.5%: status {}\n", 1000 + status);
    }
}

// A child with its output in a file.
template <class Work>
pid_t start(const std::string& output, Work work)
{
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(file, STDOUT_FILENO);
    dup2(file, STDERR_FILENO);
    std::exit(work());
}

class Soak {
public:
    Soak(double minutes, std::uint64_t seed)
        : seed_(seed),
          end_(Clock::now() +
               std::chrono::duration_cast<milliseconds>(std::chrono::duration<double, std::ratio<60>>(minutes)))
    {
        setenv("VORINFRA_DIR", (place_.path() / "run").c_str(), 1);
        setenv("VORINFRA_ROOT", place_.path().c_str(), 1);
        setenv("VORINFRA_TIMEOUT_MS", std::to_string(patience_ms).c_str(), 1);
        write_rules(file("faults"));
    }

    bool run()
    {
        start_gateway();
        for (unsigned client = 0; client < most_clients; ++client) {
            start_client(client, 0);
        }
        while (!clients_.empty() && failed_.empty()) {
            std::this_thread::sleep_for(milliseconds(5));
            reap();
            if (Clock::now() < end_ && Clock::now() > gateway_began_ + gateway_lives) {
                end_gateway(SIGKILL);
                start_gateway();
            }
            if (Clock::now() > end_ + grace) {
                failed_ = "a client does not end";
            }
        }
        for (const auto& [pid, client] : clients_) {
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
        if (const int status = end_gateway(SIGTERM); status != 0 && failed_.empty()) {
            fail("the gateway", status, file("gateway"));
        }
        print_summary();
        return failed_.empty();
    }

private:
    std::string file(const std::string& name) const { return (place_.path() / name).string(); }

    void fail(const std::string& who, int status, const std::string& output)
    {
        const std::string said = processes::contents(output);
        failed_ = fmt::format("{} ended with {} {}\n{}", who, WIFSIGNALED(status) ? "signal" : "exit code",
                              WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status),
                              said.substr(said.size() - std::min<std::size_t>(said.size(), 6000)));
    }

    // Clients read its journal once it is ready; of those before it they have read all.
    void start_gateway()
    {
        const unsigned number = shared_.gateway + 1;
        const std::string output = file("gateway");
        const std::string seed = std::to_string(seed_ + number);
        std::filesystem::remove(output);
        gateway_ = start(output, [&] {
            execl(VORSIM, VORSIM, "--faults", file("faults").c_str(), "--seed", seed.c_str(), "--sap",
                  std::to_string(mark_sap).c_str(), "--lenient-konfd", "--journal",
                  journal_of(place_.path(), number).c_str(), nullptr);
            return 127;
        });
        while (processes::contents(output).find("vorsim: ready") == std::string::npos && failed_.empty()) {
            std::this_thread::sleep_for(milliseconds(5));
            if (int status = 0; waitpid(gateway_, &status, WNOHANG) == gateway_) {
                fail("the gateway", status, output);
            }
        }
        shared_.gateway = number;
        gateway_began_ = Clock::now();
        std::filesystem::remove(journal_of(place_.path(), number - 1));
    }

    int end_gateway(int signal)
    {
        int status = 0;
        kill(gateway_, signal);
        waitpid(gateway_, &status, 0);
        return status;
    }

    void start_client(unsigned client, unsigned life)
    {
        const Part part{shared_, place_.path(), seed_, client, life, end_};
        clients_[start(output_of(client), [&] {
            return std::freopen("/dev/null", "w", stdout) != nullptr ? soak::run(part) : 1;
        })] = {client, life};
    }

    std::string output_of(unsigned client) const { return file(fmt::format("client.{}", client)); }

    void reap()
    {
        for (auto next = clients_.begin(); next != clients_.end();) {
            const auto [pid, who] = *next;
            int status = 0;
            if (waitpid(pid, &status, WNOHANG) != pid) {
                ++next;
                continue;
            }
            next = clients_.erase(next);
            if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) {
                ++killed_;
                start_client(who.client, who.life + 1);
            } else if (status != 0) {
                fail(fmt::format("client {}", who.client), status, output_of(who.client));
                return;
            }
        }
    }

    void print_summary() const
    {
        std::array<std::uint64_t, 6> sums{};
        for (const Shared::Tally& tally : shared_.tallies) {
            std::size_t at = 0;
            for (const auto* number :
                 {&tally.calls, &tally.answered, &tally.unanswered, &tally.konfd, &tally.undecided, &tally.kept}) {
                sums[at++] += *number;
            }
        }
        vor::print_line(stdout, fmt::format("soak: {} calls: {} answered, {} unanswered or not sent, {} of konfd, {} "
                                            "while the gateway died; {} buffers kept by design; {} clients and {} "
                                            "gateways killed",
                                            sums[0], sums[1], sums[2], sums[3], sums[4], sums[5], killed_,
                                            shared_.gateway - 1));
        vor::print_line(stdout, failed_.empty() ? "soak: passed" : fmt::format("soak: FAILED: {}", failed_));
    }

    struct Who {
        unsigned client, life;
    };

    const std::uint64_t seed_;
    const Clock::time_point end_;
    const processes::TemporaryDirectory place_;
    Shared& shared_ =
        *static_cast<Shared*>(mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    pid_t gateway_ = -1;
    Clock::time_point gateway_began_;
    std::map<pid_t, Who> clients_;
    unsigned killed_ = 0;
    std::string failed_;
};

template <class Number>
std::optional<Number> number_in(std::string_view word)
{
    Number number{};
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    return error == std::errc{} && end == word.data() + word.size() ? std::optional(number) : std::nullopt;
}

} // namespace

int main(int argc, char** argv)
{
    const auto minutes = argc > 1 ? number_in<double>(argv[1]) : 1;
    const auto seed = argc > 2 ? number_in<std::uint64_t>(argv[2]) : std::random_device{}();
    if (argc > 3 || !minutes || *minutes <= 0 || !seed) {
        vor::print_line(stderr, "usage: soak [MINUTES [SEED]]");
        return 2;
    }
    vor::print_line(stdout, fmt::format("soak: {} minutes, seed {}", *minutes, *seed));
    return Soak(*minutes, *seed).run() ? 0 : 1;
}
