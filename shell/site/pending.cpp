#include "site/pending.hpp"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <termios.h>
#include <unistd.h>

#include <fmt/core.h>

#include "input/terminal.hpp"
#include "output/output.hpp"
#include "site/commands.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

namespace {

using Clock = std::chrono::steady_clock;

std::string hint_for(const std::string& path)
{
    return fmt::format("vorcfg confirm {0} to keep the changes, vorcfg revert {0} to undo them", path);
}

// The waiting process holds a lock far behind the journal's end, which goes with the process, however that ends.
struct flock waiting_lock(int type)
{
    struct flock lock {};
    lock.l_type = static_cast<short>(type);
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(1) << 30;
    lock.l_len = 1;
    return lock;
}

bool is_waiting(const std::string& path)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct flock lock = waiting_lock(F_WRLCK);
    const bool waits = descriptor >= 0 && fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    close(descriptor);
    return waits;
}

struct Call {
    const Entry* undone;
    call::PreparedCall prepared;
};

// The calls that revert, all of them prepared before the first is made. Names those that cannot be reverted.
std::vector<Call> reverting_calls(const std::vector<History::Undo>& undos)
{
    std::vector<Call> calls;
    for (const History::Undo& undo : undos) {
        const CallBegun& begun = undo.entry->begun;
        std::string why;
        try {
            if (undo.before != nullptr) {
                calls.push_back({undo.entry, call::prepare(undo.before->begun.key)});
                calls.back().prepared.place = {begun.file, begun.line, 0};
                continue;
            }
        } catch (const input::InputError& error) { // of another version's journal
            why = ": " + error.text;
        }
        vor::print_line(stdout, fmt::format("{}:{}: {}: cannot be reverted{}", vor::printable(begun.file), begun.line,
                                            call::name_of(begun.key), why));
    }
    return calls;
}

// Makes again what each call replaced, the last first.
int revert(Journal& journal, const input::Options& options)
{
    const auto undos = journal.history().undos();
    std::vector<Call> calls = reverting_calls(undos);
    const auto summary = [&](const call::Tally& tally, std::size_t left) {
        output::Counts counts = output::counts_of(tally, left);
        counts.add("cannot be reverted", undos.size() - calls.size());
        return fmt::format("{}: {}reverted: {}\n", vor::printable(journal.path()),
                           tally.failed.empty() && left == 0 ? "" : "not all calls were ", counts.text());
    };
    input::Options all = options;
    all.keep_going = true;
    const Entry* undone = nullptr;
    output::ConsoleReporter account(all, output::screen_of(options), summary);
    for (const Call& call : calls) {
        account.expect(call::name_of(call.undone->begun.key));
    }
    call::BatchRunner runner(
        all, calls.size(), account,
        {.before = [&](const call::PreparedCall& call) { journal.begin(call, undone); },
         .after = [&](const call::PreparedCall& call, const call::CallResult& result) { journal.end(call, result); },
         .hang_up_ends = false});
    for (Call& call : calls) {
        undone = call.undone;
        if (!runner.make(call.prepared) && runner.ended()) {
            break;
        }
    }
    const int exit = runner.finish();
    if (runner.tally().failed.empty() && exit != input::exit_ended) {
        journal.append(ApplyDecided{.confirmed = false});
    }
    return exit;
}

// In the waiting process: reads the journal whenever it changes. One in use is being confirmed or reverted.
int wait_and_revert(const std::string& path, const input::Options& options, Clock::time_point deadline)
{
    const int changes = inotify_init1(IN_CLOEXEC);
    inotify_add_watch(changes, path.c_str(), IN_MODIFY);
    while (true) {
        try {
            if (!Journal::read(path).history().pending()) {
                return input::exit_ok;
            }
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) {
                Journal journal = Journal::open(path);
                return journal.history().pending() ? revert(journal, options) : input::exit_ok;
            }
            pollfd change{changes, POLLIN, 0};
            if (poll(&change, 1, static_cast<int>(left)) == 1) {
                std::array<char, 4096> events{};
                (void)!read(changes, events.data(), events.size());
            }
        } catch (const input::InputError&) {
            constexpr int while_it_is_in_use_ms = 50;
            poll(nullptr, 0, while_it_is_in_use_ms);
        }
    }
}

// The detached process: no terminal, no hang-up.
[[noreturn]] void wait_detached(const std::string& path, const input::Options& options, int ready,
                                Clock::time_point deadline)
{
    setsid();
    std::signal(SIGHUP, SIG_IGN);
    const int held = open(path.c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock = waiting_lock(F_WRLCK);
    const bool locked = fcntl(held, F_OFD_SETLKW, &lock) == 0; // the one before may still be ending
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nowhere, descriptor);
    }
    (void)!write(ready, locked ? "y" : "n", 1);
    std::_Exit(wait_and_revert(path, options, deadline));
}

struct Waiter {
    pid_t process;
    int end; // can be read once it has ended
};

// Returns once it holds its lock.
Waiter start_waiting(Journal& journal, const input::Options& options, Clock::time_point deadline)
{
    const input::InputError failure{
        .text = "cannot start the confirmation timer", .exit = input::exit_journal, .hint = hint_for(journal.path())};
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw input::InputError(failure);
    }
    std::fflush(nullptr);
    const pid_t process = fork();
    if (process == 0) {
        close(ends[0]);
        journal.close();
        wait_detached(journal.path(), options, ends[1], deadline);
    }
    close(ends[1]);
    char ready = 'n';
    if (process < 0 || read(ends[0], &ready, 1) != 1 || ready != 'y') {
        throw input::InputError(failure);
    }
    return {process, ends[0]};
}

enum class Left { enter, interrupted, alone };

// Counts down until an empty line, Ctrl-C, or until the other process has ended or this one has no terminal any more.
Left wait_at_terminal(const Waiter& waiter, Clock::time_point deadline)
{
    input::Waiting for_enter;
    bool empty = true;
    vor::Progress countdown("");
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::seconds>(deadline - Clock::now()).count();
        countdown.show_text(left > 0 ? fmt::format("Reverting in {} s unless confirmed ", left) : "Reverting ... ");
        pollfd waits[] = {{STDIN_FILENO, POLLIN, 0}, {waiter.end, POLLIN, 0}};
        constexpr timespec second{1, 0};
        if (!for_enter.wait(waits, &second)) {
            return Left::interrupted;
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
            vor::print_line(stdout, "Press Enter alone to confirm");
        }
        empty = byte == '\n';
    }
}

// The calls that reverted others of a confirmed apply.
std::vector<const Entry*> reverted_calls(const History& history, std::uint64_t first)
{
    std::vector<const Entry*> entries;
    for (const Entry& entry : history.entries()) {
        if (entry.begun.number >= first && entry.begun.takes_back) {
            entries.push_back(&entry);
        }
    }
    return entries;
}

// What became of it without this process, from the journal.
int report_decision(const std::string& path, std::uint64_t first)
{
    const Journal journal = Journal::read(path);
    const auto undone = reverted_calls(journal.history(), first);
    for (const Entry* const entry : undone) {
        vor::print_line(stdout, fmt::format("{}:{}: {}: reverted, {}", vor::printable(entry->begun.file),
                                            entry->begun.line, call::name_of(entry->begun.key), entry->ended.verdict));
    }
    if (journal.history().pending()) {
        output::print_error(pending_error(journal), false);
    } else {
        vor::print_line(stdout, fmt::format("{}: {}", vor::printable(path), undone.empty() ? "confirmed" : "reverted"));
    }
    return undone.empty() ? input::exit_ok : input::exit_ended;
}

} // namespace

input::InputError pending_error(const Journal& journal)
{
    const std::string& path = journal.path();
    const ApplyPending& pending = *journal.history().pending();
    std::string state = "the last apply ended before it was confirmed";
    if (is_waiting(path)) {
        state = fmt::format("not confirmed yet, the last apply will be reverted at {}", second_of(pending.until));
    } else if (!reverted_calls(journal.history(), pending.first).empty()) {
        state = "the last apply was reverted only in part";
    }
    return {.text = fmt::format("{}: {}", path, state), .exit = input::exit_journal, .hint = hint_for(path)};
}

void check_nothing_pending(const Journal& journal)
{
    if (journal.history().pending()) {
        throw input::InputError(pending_error(journal));
    }
}

int wait_for_confirmation(Journal journal, const input::Options& options)
{
    const std::string path = journal.path();
    if (journal.history().undos().empty()) { // no call was made
        journal.append(ApplyDecided{.confirmed = true});
        return input::exit_ok;
    }
    const std::chrono::seconds time(*options.confirm);
    const std::string until = stamp(time);
    const Clock::time_point deadline = Clock::now() + time;
    const Waiter waiter = start_waiting(journal, options, deadline);
    const std::uint64_t first = journal.history().pending()->first;
    journal.append(ApplyPending{first, until, waiter.process});
    journal.close();
    const bool asks = input::at_terminal();
    if (asks) {
        tcflush(STDIN_FILENO, TCIFLUSH); // input typed before is not a confirmation
    }
    vor::print_line(stdout, fmt::format("{}: will be reverted at {} unless confirmed\nhint: {}{}", vor::printable(path),
                                        second_of(until), hint_for(path), asks ? "\nPress Enter to confirm" : ""));
    if (!asks) {
        return input::exit_ok;
    }
    switch (wait_at_terminal(waiter, deadline)) {
    case Left::enter:
        return run_confirm(path, options);
    case Left::interrupted:
        output::print_error(pending_error(Journal::read(path)), false);
        return input::exit_ended;
    default:
        return report_decision(path, first);
    }
}

namespace {

Journal pending_journal(const std::string& path, const char* what)
{
    Journal journal = Journal::open(path);
    if (!journal.history().pending()) {
        throw input::InputError{fmt::format("{}: no apply is waiting to be {}", path, what), input::exit_journal};
    }
    return journal;
}

} // namespace

int run_confirm(const std::string& path, const input::Options&)
{
    pending_journal(path, "confirmed").append(ApplyDecided{.confirmed = true});
    vor::print_line(stdout, fmt::format("{}: confirmed", vor::printable(path)));
    return input::exit_ok;
}

int run_revert(const std::string& path, const input::Options& options)
{
    Journal journal = pending_journal(path, "reverted");
    return revert(journal, options);
}

} // namespace vorcfg::site
