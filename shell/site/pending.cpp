#include "site/pending.hpp"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <termios.h>
#include <unistd.h>

#include <fmt/core.h>

#include "input/terminal.hpp"
#include "output/output.hpp"
#include "site/clock.hpp"
#include "site/show.hpp"
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

std::string taken_back_text(const std::string& path, const Tally& tally, std::size_t left, std::size_t kept)
{
    return fmt::format("{}: {} accepted, {} sent, {} unread, {} failed, {} not made: {}{}\n", vor::printable(path),
                       tally.accepted, tally.sent, tally.unread, tally.failed.size(), left,
                       tally.failed.empty() && left == 0 ? "taken back" : "not all is taken back",
                       kept != 0 ? fmt::format("; {} cannot be taken back", kept) : "");
}

struct TakingBack {
    const Entry* undone;
    Planned planned;
};

// What is to be made, all of it known before the first call; of the rest it is
// said why it is left.
std::vector<TakingBack> calls_back(const History& history, std::size_t& kept)
{
    std::vector<TakingBack> calls;
    for (const History::Undo& undo : history.undos()) {
        std::string why;
        try {
            if (undo.before != nullptr) {
                calls.push_back({undo.entry, planned(undo.before->said)});
                calls.back().planned.place = {undo.entry->file, undo.entry->line, 0};
                continue;
            }
        } catch (const Complaint& complaint) { // what another version kept
            why = ": " + complaint.text;
        }
        kept++;
        vor::print_line(stdout, fmt::format("{}:{}: {}: cannot be taken back{}", vor::printable(undo.entry->file),
                                            undo.entry->line, name_of(undo.entry->said), why));
    }
    return calls;
}

// Everything of it once more with what stood before, the last first.
int take_back(Journal& journal, const Options& options)
{
    std::size_t kept = 0;
    std::vector<TakingBack> calls = calls_back(journal.history(), kept);
    Options going_on = options;
    going_on.keep_going = true;
    const Entry* undone = nullptr;
    const auto summary = [&](const Tally& tally, std::size_t left) {
        return taken_back_text(journal.path(), tally, left, kept);
    };
    Account account(going_on, calls.size(), summary);
    Making making(going_on, calls.size(), account, journaled(journal, false, undone));
    for (TakingBack& call : calls) {
        undone = call.undone;
        if (!making.make(call.planned) && making.ended()) {
            break;
        }
    }
    const int exit = making.finish();
    if (making.tally().failed.empty() && exit != exit_ended) {
        journal.taken_back();
    }
    return exit;
}

bool is_decided(const std::string& path)
{
    return !Journal::read(path).history().pending().has_value();
}

// Of the process that waits: the journal is looked at whenever it changes. One
// in use is being decided about.
int wait_and_take_back(const std::string& path, const Options& options, Clock::time_point deadline)
{
    const int changes = inotify_init1(IN_CLOEXEC);
    inotify_add_watch(changes, path.c_str(), IN_MODIFY);
    while (true) {
        try {
            if (is_decided(path)) {
                return exit_ok;
            }
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) {
                Journal journal = Journal::reopen(path);
                return journal.history().pending() ? take_back(journal, options) : exit_ok;
            }
            pollfd change{changes, POLLIN, 0};
            if (poll(&change, 1, static_cast<int>(left)) == 1) {
                std::array<char, 4096> events{};
                (void)!read(changes, events.data(), events.size());
            }
        } catch (const Complaint&) {
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

enum class Left { enter, interrupted, alone };

// Until an empty line, Ctrl-C, or until the other process has ended or this one has no terminal any more.
Left wait_at_terminal(int process)
{
    Waiting for_enter;
    bool empty = true;
    while (true) {
        pollfd waits[] = {{STDIN_FILENO, POLLIN, 0}, {process, POLLIN, 0}};
        if (!for_enter.wait(waits)) {
            return Left::interrupted;
        }
        char byte;
        if (waits[1].revents != 0 || (waits[0].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0 ||
            (waits[0].revents != 0 && read(STDIN_FILENO, &byte, 1) != 1)) {
            return Left::alone;
        }
        if (waits[0].revents != 0 && byte == '\n' && empty) {
            return Left::enter;
        }
        if (waits[0].revents != 0 && byte == '\n') {
            vor::print_line(stdout, "Enter alone keeps it");
        }
        empty = waits[0].revents == 0 ? empty : byte == '\n';
    }
}

// What became of it without this process, as the journal has it.
int tell_decision(const std::string& path, std::uint64_t first)
{
    const Journal journal = Journal::read(path);
    bool taken_back = false;
    for (const Entry& entry : journal.history().entries()) {
        if (entry.number >= first && entry.takes_back) {
            taken_back = true;
            vor::print_line(stdout, fmt::format("{}:{}: {}: taken back, {}", vor::printable(entry.file), entry.line,
                                                name_of(entry.said), entry.verdict));
        }
    }
    vor::print_line(stdout, journal.history().pending()
                                ? pending_text(journal)
                                : fmt::format("{}: {}", vor::printable(path), taken_back ? "taken back" : "kept"));
    return taken_back ? exit_ended : exit_ok;
}

} // namespace

Making::Hooks journaled(Journal& journal, bool hang_up_ends, const Entry* const& undone)
{
    return {.before =
                [&](const Planned& planned) {
                    const Said says = said(planned);
                    journal.begin(says, planned.place, journal.history().replaced_by(says), undone);
                },
            .after =
                [&](const Planned& planned, const Report& report) {
                    journal.end(report.verdict, was_done(*planned.row, report.verdict.outcome, report.seen));
                },
            .hang_up_ends = hang_up_ends};
}

std::string pending_text(const Journal& journal)
{
    const std::string& path = journal.path();
    const std::string& until = journal.history().pending()->until;
    if (somebody_waits(path)) {
        return fmt::format("{}: a confirmed apply waits until {}; {}", path, second_of(until), offer(path));
    }
    const std::uint64_t first = journal.history().pending()->first;
    if (std::ranges::any_of(journal.history().entries(),
                            [&](const Entry& entry) { return entry.takes_back && entry.number >= first; })) {
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
        throw Complaint{pending_text(journal), exit_journal};
    }
}

int wait_for_confirmation(Journal journal, const Options& options)
{
    const std::string path = journal.path();
    if (journal.history().undos().empty()) { // nothing of it was done
        journal.confirm();
        return exit_ok;
    }
    const std::string until = stamp(now() + static_cast<std::time_t>(*options.confirm));
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(*options.confirm);
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw Complaint{fmt::format("nobody waits for the confirmation; {}", offer(path)), exit_journal};
    }
    std::fflush(nullptr);
    const pid_t waiter = fork();
    if (waiter == 0) {
        close(ends[0]);
        journal.close();
        wait_detached(path, options, ends[1], deadline);
    }
    close(ends[1]);
    char ready = 'n';
    if (waiter < 0 || read(ends[0], &ready, 1) != 1 || ready != 'y') {
        throw Complaint{fmt::format("nobody waits for the confirmation; {}", offer(path)), exit_journal};
    }
    journal.pend_until(until, waiter);
    const std::uint64_t first = journal.history().pending()->first;
    journal.close();
    if (at_terminal()) {
        tcflush(STDIN_FILENO, TCIFLUSH); // what was typed before answers nothing
    }
    vor::print_line(stdout, fmt::format("{}: waits for {} s, until {}; {}{}", vor::printable(path), *options.confirm,
                                        second_of(until), at_terminal() ? "Enter or " : "", offer(path)));
    if (!at_terminal()) {
        return exit_ok;
    }
    switch (wait_at_terminal(ends[0])) {
    case Left::enter:
        return run_confirm(path, options);
    case Left::interrupted:
        vor::print_line(stderr, fmt::format("\nvorcfg: {}", pending_text(Journal::read(path))));
        return exit_ended;
    default:
        return tell_decision(path, first);
    }
}

int run_confirm(const std::string& path, const Options&)
{
    Journal journal = Journal::reopen(path);
    if (!journal.history().pending()) {
        throw Complaint{fmt::format("{}: nothing waits to be confirmed", path), exit_journal};
    }
    journal.confirm();
    vor::print_line(stdout, fmt::format("{}: kept", vor::printable(path)));
    return exit_ok;
}

int run_revert(const std::string& path, const Options& options)
{
    Journal journal = Journal::reopen(path);
    if (!journal.history().pending()) {
        throw Complaint{fmt::format("{}: nothing waits to be taken back", path), exit_journal};
    }
    return take_back(journal, options);
}

} // namespace vorcfg
