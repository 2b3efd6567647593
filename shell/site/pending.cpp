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

namespace vorcfg {

namespace {

using Clock = std::chrono::steady_clock;

std::string offer(const std::string& path)
{
    return fmt::format("vorcfg confirm {0} keeps it, vorcfg revert {0} takes it back", path);
}

// The process that waits holds a lock far behind the journal's end: it goes
// with the process, however that ends.
struct flock waiting_lock(int type)
{
    struct flock lock {};
    lock.l_type = static_cast<short>(type);
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(1) << 30;
    lock.l_len = 1;
    return lock;
}

bool somebody_waits(const std::string& path)
{
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct flock lock = waiting_lock(F_WRLCK);
    const bool waits = descriptor >= 0 && fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    close(descriptor);
    return waits;
}

struct Call {
    const Entry* undone;
    PreparedCall planned;
};

// What is to be made, all of it known before the first call; of the rest it is
// said why it is left.
std::vector<Call> calls_back(const std::vector<History::Undo>& undos)
{
    std::vector<Call> calls;
    for (const History::Undo& undo : undos) {
        const CallBegun& begun = undo.entry->begun;
        std::string why;
        try {
            if (undo.before != nullptr) {
                calls.push_back({undo.entry, planned(undo.before->begun.key)});
                calls.back().planned.place = {begun.file, begun.line, 0};
                continue;
            }
        } catch (const InputError& complaint) { // what another version kept
            why = ": " + complaint.text;
        }
        vor::print_line(stdout, fmt::format("{}:{}: {}: cannot be taken back{}", vor::printable(begun.file), begun.line,
                                            name_of(begun.key), why));
    }
    return calls;
}

// Everything of it once more with what stood before, the last first.
int take_back(Journal& journal, const Options& options)
{
    const auto undos = journal.history().undos();
    std::vector<Call> calls = calls_back(undos);
    const std::size_t kept = undos.size() - calls.size();
    const auto summary = [&](const Tally& tally, std::size_t left) {
        return fmt::format("{}: {} accepted, {} sent, {} unread, {} failed, {} not made: {}{}\n",
                           vor::printable(journal.path()), tally.accepted, tally.sent, tally.unread,
                           tally.failed.size(), left,
                           tally.failed.empty() && left == 0 ? "taken back" : "not all is taken back",
                           kept != 0 ? fmt::format("; {} cannot be taken back", kept) : "");
    };
    Options going_on = options;
    going_on.keep_going = true;
    const Entry* undone = nullptr;
    Account account(going_on, calls.size(), summary);
    BatchRunner runner(
        going_on, calls.size(), account,
        {.before = [&](const PreparedCall& planned) { journal.begin(planned, undone); },
         .after = [&](const PreparedCall& planned, const CallResult& report) { journal.end(planned, report); },
         .hang_up_ends = false});
    for (Call& call : calls) {
        undone = call.undone;
        if (!runner.make(call.planned) && runner.ended()) {
            break;
        }
    }
    const int exit = runner.finish();
    if (runner.tally().failed.empty() && exit != exit_ended) {
        journal.append(ApplyDecided{.kept = false});
    }
    return exit;
}

// Of the process that waits: the journal is looked at whenever it changes. One
// in use is being decided about.
int wait_and_take_back(const std::string& path, const Options& options, Clock::time_point deadline)
{
    const int changes = inotify_init1(IN_CLOEXEC);
    inotify_add_watch(changes, path.c_str(), IN_MODIFY);
    while (true) {
        try {
            if (!Journal::read(path).history().pending()) {
                return exit_ok;
            }
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) {
                Journal journal = Journal::open(path);
                return journal.history().pending() ? take_back(journal, options) : exit_ok;
            }
            pollfd change{changes, POLLIN, 0};
            if (poll(&change, 1, static_cast<int>(left)) == 1) {
                std::array<char, 4096> events{};
                (void)!read(changes, events.data(), events.size());
            }
        } catch (const InputError&) {
            constexpr int while_it_is_in_use_ms = 50;
            poll(nullptr, 0, while_it_is_in_use_ms);
        }
    }
}

// The detached process: no terminal, no hang-up.
[[noreturn]] void wait_detached(const std::string& path, const Options& options, int ready, Clock::time_point deadline)
{
    setsid();
    std::signal(SIGHUP, SIG_IGN);
    const int held = open(path.c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock = waiting_lock(F_WRLCK);
    const bool locked = fcntl(held, F_OFD_SETLKW, &lock) == 0; // one that has been decided about may still be ending
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nowhere, descriptor);
    }
    (void)!write(ready, locked ? "y" : "n", 1);
    std::_Exit(wait_and_take_back(path, options, deadline));
}

struct Waiter {
    pid_t process;
    int end; // ready to be read when it has ended
};

// When this returns, it holds its lock.
Waiter start_waiting(Journal& journal, const Options& options, Clock::time_point deadline)
{
    const InputError nobody{fmt::format("nobody waits for the confirmation; {}", offer(journal.path())), exit_journal};
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw InputError(nobody);
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
        throw InputError(nobody);
    }
    return {process, ends[0]};
}

enum class Left { enter, interrupted, alone };

// Until an empty line, Ctrl-C, or until the other process has ended or this one has no terminal any more.
Left wait_at_terminal(const Waiter& waiter)
{
    Waiting for_enter;
    bool empty = true;
    while (true) {
        pollfd waits[] = {{STDIN_FILENO, POLLIN, 0}, {waiter.end, POLLIN, 0}};
        if (!for_enter.wait(waits)) {
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
            vor::print_line(stdout, "Enter alone keeps it");
        }
        empty = byte == '\n';
    }
}

// The calls of a confirmed apply that undo others of it.
std::vector<const Entry*> taken_back(const History& history, std::uint64_t first)
{
    std::vector<const Entry*> entries;
    for (const Entry& entry : history.entries()) {
        if (entry.begun.number >= first && entry.begun.takes_back) {
            entries.push_back(&entry);
        }
    }
    return entries;
}

// What became of it without this process, as the journal has it.
int tell_decision(const std::string& path, std::uint64_t first)
{
    const Journal journal = Journal::read(path);
    const auto undone = taken_back(journal.history(), first);
    for (const Entry* const entry : undone) {
        vor::print_line(stdout, fmt::format("{}:{}: {}: taken back, {}", vor::printable(entry->begun.file),
                                            entry->begun.line, name_of(entry->begun.key), entry->ended.verdict));
    }
    vor::print_line(stdout, journal.history().pending()
                                ? pending_text(journal)
                                : fmt::format("{}: {}", vor::printable(path), undone.empty() ? "kept" : "taken back"));
    return undone.empty() ? exit_ok : exit_ended;
}

} // namespace

std::string pending_text(const Journal& journal)
{
    const std::string& path = journal.path();
    const ApplyPending& pending = *journal.history().pending();
    if (somebody_waits(path)) {
        return fmt::format("{}: a confirmed apply waits until {}; {}", path, second_of(pending.until), offer(path));
    }
    if (!taken_back(journal.history(), pending.first).empty()) {
        return fmt::format(
            "{0}: a confirmed apply is taken back in part; vorcfg revert {0} goes on, vorcfg confirm {0} "
            "keeps what stands",
            path);
    }
    return fmt::format("{}: a confirmed apply was ended before it was confirmed; {}", path, offer(path));
}

void check_nothing_pending(const Journal& journal)
{
    if (journal.history().pending()) {
        throw InputError{pending_text(journal), exit_journal};
    }
}

int wait_for_confirmation(Journal journal, const Options& options)
{
    const std::string path = journal.path();
    if (journal.history().undos().empty()) { // nothing of it was done
        journal.append(ApplyDecided{.kept = true});
        return exit_ok;
    }
    const std::chrono::seconds time(*options.confirm);
    const std::string until = stamp(time);
    const Waiter waiter = start_waiting(journal, options, Clock::now() + time);
    const std::uint64_t first = journal.history().pending()->first;
    journal.append(ApplyPending{first, until, waiter.process});
    journal.close();
    const bool asks = at_terminal();
    if (asks) {
        tcflush(STDIN_FILENO, TCIFLUSH); // what was typed before answers nothing
    }
    vor::print_line(stdout, fmt::format("{}: waits for {} s, until {}; {}{}", vor::printable(path), *options.confirm,
                                        second_of(until), asks ? "Enter or " : "", offer(path)));
    if (!asks) {
        return exit_ok;
    }
    switch (wait_at_terminal(waiter)) {
    case Left::enter:
        return run_confirm(path, options);
    case Left::interrupted:
        vor::print_line(stderr, fmt::format("\nvorcfg: {}", pending_text(Journal::read(path))));
        return exit_ended;
    default:
        return tell_decision(path, first);
    }
}

namespace {

Journal pending_journal(const std::string& path, const char* what)
{
    Journal journal = Journal::open(path);
    if (!journal.history().pending()) {
        throw InputError{fmt::format("{}: nothing waits to be {}", path, what), exit_journal};
    }
    return journal;
}

} // namespace

int run_confirm(const std::string& path, const Options&)
{
    pending_journal(path, "confirmed").append(ApplyDecided{.kept = true});
    vor::print_line(stdout, fmt::format("{}: kept", vor::printable(path)));
    return exit_ok;
}

int run_revert(const std::string& path, const Options& options)
{
    Journal journal = pending_journal(path, "taken back");
    return take_back(journal, options);
}

} // namespace vorcfg
