// Reverting by hand, and what nobody reverted in time: the machine was off, or the process that waited was killed.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <grp.h>
#include <iterator>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/core.h>

#include "site/commands.hpp"
#include "site/confirm.hpp"
#include "site/journal.hpp"
#include "site/revert.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

namespace {

int exit_of_revert(const ConfirmedApply& apply)
{
    return apply.confirmation == Confirmation::reverted ? input::exit_ok : input::exit_partly_reverted;
}

constexpr int still_expired = input::exit_due;

// One journal, once.
int revert_if_expired(const std::string& path, const input::Options& options)
try {
    const Machine machine = this_machine(options.json);
    const Journal seen = Journal::read(machine, path);
    if (seen.ledger().confirmation(seen.now()) != Confirmation::expired || has_waiter(path)) {
        return input::exit_ok;
    }
    Journal journal = Journal::open(machine, path);
    if (journal.ledger().confirmation(journal.now()) != Confirmation::expired) {
        return input::exit_ok;
    }
    if (const Reverting reverting = revert(journal, options, call::Signals::all); reverting != Reverting::done) {
        require_recorded(journal);
        return reverting == Reverting::later ? still_expired : int(input::exit_ended);
    }
    require_recorded(journal);
    const ConfirmedApply apply = *confirmed_apply_of(journal);
    print_lines(apply, options.json);
    print(apply, options.json, stdout);
    return exit_of_revert(apply);
} catch (const input::InputError& error) {
    return output::print_error(error, options.json);
}

void become(uid_t user)
{
    const passwd* const entry = getpwuid(user);
    if (entry == nullptr || initgroups(entry->pw_name, entry->pw_gid) != 0 || setgid(entry->pw_gid) != 0 ||
        setuid(user) != 0) {
        throw input::InputError{fmt::format("cannot become user {}", user), input::exit_unusable};
    }
}

// Root reads and writes nothing that belongs to others.
int revert_as_owner(const std::string& path, const input::Options& options)
{
    struct stat status {};
    if (geteuid() != 0 || lstat(path.c_str(), &status) != 0 || status.st_uid == 0) {
        return revert_if_expired(path, options);
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        int exit = input::exit_unusable;
        try {
            become(status.st_uid);
            exit = revert_if_expired(path, options);
        } catch (const input::InputError& error) {
            output::print_error({.text = fmt::format("{}: {}", path, error.text), .exit = error.exit}, options.json);
        }
        std::fflush(nullptr);
        std::_Exit(exit);
    }
    int status_of_child = 0;
    return child > 0 && waitpid(child, &status_of_child, 0) == child && WIFEXITED(status_of_child)
               ? WEXITSTATUS(status_of_child)
               : int(input::exit_unusable);
}

} // namespace

int run_revert(const std::string& path, const input::Options& options)
{
    const Machine machine = this_machine(options.json);
    Journal journal = journal_to_decide(machine, path);
    if (const auto decided = decided_apply(journal)) {
        print(*decided, options.json, stdout);
        return decided->confirmation == Confirmation::confirmed ? int(input::exit_journal) : exit_of_revert(*decided);
    }
    const auto each = [&](const Undo& undo) { print_line(undo, options.json); };
    for (const Undo& undo : journal.ledger().undos()) {
        if (!undo.can_still_be_reverted()) {
            each(undo);
        }
    }
    const bool is_done = revert(journal, options, call::Signals::all, each) == Reverting::done;
    require_recorded(journal);
    const ConfirmedApply apply = *confirmed_apply_of(journal);
    print(apply, options.json, is_done ? stdout : stderr);
    return exit_of_revert(apply);
}

int run_revert_expired(const std::vector<std::string>& paths, const input::Options& options)
{
    std::vector<std::string> left;
    int worst = input::exit_ok;
    for (const std::string& path : paths) {
        try {
            std::ranges::copy(journals_in(path), std::back_inserter(left));
        } catch (const input::InputError& error) { // the others are reverted all the same
            worst = std::max(worst, output::print_error(error, options.json));
        }
    }
    bool interrupted = false;
    for (unsigned delay = 1; !left.empty(); delay = std::min(2 * delay, 60U)) {
        std::erase_if(left, [&](const std::string& path) {
            const int exit = revert_as_owner(path, options);
            interrupted = interrupted || exit == input::exit_ended;
            worst = exit == still_expired ? worst : std::max(worst, exit);
            return exit != still_expired;
        });
        if (interrupted) {
            return input::exit_ended;
        }
        if (!left.empty()) { // their managers may still be starting
            output::print_notice(
                fmt::format("{} not reverted yet, trying again in {} s", vor::joined(left, ", "), delay), {},
                options.json, stderr);
            sleep(delay);
        }
    }
    return worst;
}

} // namespace vorcfg::site
