#include "site/confirm.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <fmt/core.h>

#include "input/terminal.hpp"
#include "site/commands.hpp"
#include "site/revert.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

namespace {

using std::chrono::milliseconds;

// Twice as long each time, up to a minute.
class Delay {
public:
    milliseconds next()
    {
        constexpr milliseconds longest = std::chrono::minutes(1);
        const milliseconds now = delay_;
        delay_ = std::min(2 * delay_, longest);
        return now;
    }

private:
    milliseconds delay_ = std::chrono::seconds(1);
};

} // namespace

void wait_and_revert(const Machine& machine, const std::string& path, std::uint64_t first,
                     const input::Options& options, const Wait& wait, call::Caller* caller)
{
    constexpr milliseconds while_in_use(100);
    constexpr milliseconds to_the_end = std::chrono::seconds(10); // a machine that goes down does not wait long
    Delay delay;
    milliseconds next{}; // attempt, since boot; a change of the journal brings it no nearer
    std::optional<milliseconds> end;
    const auto now = [&] { return machine.clock.now().since_boot; };
    const auto rest = [&](milliseconds longest) {
        if (wait(longest) && !end) {
            end = now() + to_the_end;
            next = now();
        }
    };
    const auto waits = [first](const Journal& journal) { // else another apply may
        return journal.ledger().is_undecided() && journal.ledger().pending()->first == first;
    };
    while (!end || now() < *end) {
        try {
            const Journal seen = Journal::read(machine, path);
            if (!waits(seen)) {
                return;
            }
            const milliseconds left = end ? milliseconds() : seen.ledger().time_left(seen.now());
            if (const milliseconds longest = std::max(left, next - now()); longest.count() > 0) {
                rest(longest);
                continue;
            }
            Journal journal = Journal::open(machine, path);
            const bool is_done =
                !waits(journal) || revert(journal, options, call::Signals::none, {}, caller) == Reverting::done;
            while (!journal.write_kept() && !end) { // it stays locked: nobody else knows of these
                rest(delay.next());
            }
            if (is_done) {
                return;
            }
            next = now() + (end ? milliseconds(std::chrono::seconds(1)) : delay.next());
        } catch (const JournalInUse&) { // it is being confirmed or reverted
            next = now() + while_in_use;
        } catch (const input::InputError&) { // damaged, say
            next = now() + delay.next();
            rest(next - now());
        }
    }
}

namespace {

// While it lives, SIGTERM is read from a descriptor.
struct Termination {
    Termination()
    {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGTERM);
        sigprocmask(SIG_BLOCK, &set, &before);
        descriptor = signalfd(-1, &set, SFD_CLOEXEC);
    }
    Termination(const Termination&) = delete;
    Termination& operator=(const Termination&) = delete;
    ~Termination()
    {
        close(descriptor);
        sigprocmask(SIG_SETMASK, &before, nullptr);
    }

    sigset_t before{};
    int descriptor = -1;
};

// The detached process: no terminal, no hang-up.
[[noreturn]] void wait_detached(const Machine& machine, const std::string& path, std::uint64_t first,
                                const input::Options& options, int ready)
{
    setsid();
    std::signal(SIGHUP, SIG_IGN);
    const Termination termination;
    const int held = open(path.c_str(), O_RDWR | O_CLOEXEC);
    const bool locked = hold_waiting(held);                            // the one before may still be ending
    const std::string journal = fmt::format("/proc/self/fd/{}", held); // also once it has another name
    const int changes = inotify_init1(IN_CLOEXEC);
    inotify_add_watch(changes, path.c_str(), IN_CLOSE_WRITE);
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nowhere, descriptor);
    }
    (void)!write(ready, locked ? "y" : "n", 1);
    wait_and_revert(machine, journal, first, options, [&](milliseconds longest) {
        pollfd waits[] = {{changes, POLLIN, 0}, {termination.descriptor, POLLIN, 0}};
        constexpr milliseconds at_once = std::chrono::hours(24);
        poll(waits, std::size(waits), static_cast<int>(std::min(longest, at_once).count()));
        std::array<char, 4096> events{};
        if (waits[0].revents != 0) {
            (void)!read(changes, events.data(), events.size());
        }
        if (waits[1].revents != 0) {
            (void)!read(termination.descriptor, events.data(), sizeof(signalfd_siginfo));
        }
        return waits[1].revents != 0;
    });
    std::_Exit(input::exit_ok);
}

} // namespace

// Returns once it holds its lock.
Waiter::Waiter(Journal& journal, const input::Options& options)
{
    const input::InputError failure{.text = "cannot start the process that waits for confirmation; nothing was sent",
                                    .exit = input::exit_journal};
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw input::InputError(failure);
    }
    std::fflush(nullptr);
    process_ = fork();
    if (process_ == 0) {
        close(ends[0]);
        journal.close();
        input::Options patient = options;
        patient.timeout.reset(); // which would end the process
        wait_detached(journal.machine(), journal.path(), journal.ledger().pending()->first, patient, ends[1]);
    }
    close(ends[1]);
    end_ = ends[0];
    constexpr int patience_ms = 10'000;
    pollfd waits{end_, POLLIN, 0};
    int polled = 0;
    while (process_ > 0 && (polled = poll(&waits, 1, patience_ms)) < 0 && errno == EINTR) {}
    char ready = 'n';
    if (polled != 1 || read(end_, &ready, 1) != 1 || ready != 'y') {
        if (process_ > 0) {
            kill(process_, SIGKILL);
        }
        close(end_);
        throw input::InputError(failure);
    }
}

Waiter::~Waiter()
{
    close(end_);
}

void Waiter::revert_now() const
{
    kill(process_, SIGTERM);
}

Journal journal_to_decide(const Machine& machine, const std::string& path)
try {
    Journal journal = Journal::open(machine, path);
    if (!journal.ledger().pending()) {
        throw input::InputError{fmt::format("{}: no apply waits to be confirmed or reverted", path),
                                input::exit_journal};
    }
    return journal;
} catch (const JournalInUse& error) {
    if (!has_waiter(path)) {
        throw;
    }
    throw JournalInUse{{.text = error.text, .exit = error.exit, .hint = "it may be being reverted now: try again"}};
}

std::optional<ConfirmedApply> decided_apply(const Journal& journal)
{
    return journal.ledger().is_undecided() ? std::nullopt : confirmed_apply_of(journal);
}

namespace {

enum class Left { enter, interrupted, terminated, alone };

// Counts down until an empty line, Ctrl-C or termination, or until the other process has ended or this one has no
// terminal any more.
Left count_down(const Machine& machine, const Waiter& waiter, const ApplyPending& pending)
{
    const Termination termination;
    input::Waiting for_enter;
    bool empty = true;
    vor::Progress countdown("");
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::seconds>(pending.deadline - machine.clock.now().since_boot);
        countdown.show_text(left.count() > 0 ? fmt::format("Reverting in {} s unless confirmed ", left.count())
                                             : "Reverting ... ");
        pollfd waits[] = {{STDIN_FILENO, POLLIN, 0}, {waiter.end(), POLLIN, 0}, {termination.descriptor, POLLIN, 0}};
        constexpr timespec second{1, 0};
        if (!for_enter.wait(waits, &second)) {
            return Left::interrupted;
        }
        if (waits[2].revents != 0) {
            return Left::terminated;
        }
        if (waits[1].revents != 0 || (waits[0].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) {
            return Left::alone;
        }
        if (waits[0].revents == 0) {
            continue;
        }
        char byte;
        if (read(STDIN_FILENO, &byte, 1) != 1) {
            return Left::alone;
        }
        if (byte == '\n' && empty) {
            return Left::enter;
        }
        if (byte == '\n') {
            countdown.clear();
            vor::print_line(stderr, "Press Enter alone to confirm");
        }
        empty = byte == '\n';
    }
}

} // namespace

int wait_at_terminal(const Machine& machine, const std::string& path, const Waiter& waiter,
                     const input::Options& options)
{
    tcflush(STDIN_FILENO, TCIFLUSH); // input typed before is not a confirmation
    vor::print_line(stderr, "Press Enter to confirm");
    const Left left = count_down(machine, waiter, *Journal::read(machine, path).ledger().pending());
    if (left == Left::enter) {
        try {
            return run_confirm(path, options);
        } catch (const JournalInUse&) { // it is being reverted, too late
            vor::print_line(stderr, "Reverting ...");
        }
    }
    if (left == Left::terminated) {
        waiter.revert_now();
    }
    if (left == Left::terminated || left == Left::enter) {
        pollfd end{waiter.end(), POLLIN, 0};
        poll(&end, 1, -1);
    }
    const Journal journal = Journal::read(machine, path);
    const auto now = confirmed_apply_of(journal);
    if (!now) { // and something else has been applied
        return input::exit_ended;
    }
    const bool is_decided = now->confirmation != Confirmation::waiting && now->confirmation != Confirmation::expired;
    if (is_decided && now->confirmation != Confirmation::confirmed) {
        print_lines(*now, options.json);
    }
    print(*now, options.json, is_decided ? stdout : stderr);
    return is_decided ? now->exit() : input::exit_ended;
}

int run_confirm(const std::string& path, const input::Options& options)
{
    const Machine machine = this_machine(options.json);
    Journal journal = journal_to_decide(machine, path);
    if (journal.ledger().is_undecided()) {
        journal.append(ApplyDecided{.confirmed = true, .at = machine.clock.stamp()});
    }
    const ConfirmedApply apply = *confirmed_apply_of(journal); // perhaps decided before
    print(apply, options.json, stdout);
    return apply.exit();
}

} // namespace vorcfg::site
