#include "site/journal.hpp"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/core.h>

#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

namespace {

[[noreturn]] void fail(const std::string& path, std::string_view why)
{
    throw input::InputError{fmt::format("{}: {}", path, why), input::exit_journal};
}

// Perhaps it is the file of calls, whose name the journal's begins with.
[[noreturn]] void not_a_journal(const std::string& path)
{
    const std::string journal = path + ".journal";
    const bool has_one = std::filesystem::exists(journal);
    throw input::InputError{.text = fmt::format("{} is not a journal", path),
                            .exit = input::exit_journal,
                            .hint = has_one ? fmt::format("its journal is {}", journal) : ""};
}

// A new file's name is on disk when its directory is.
void sync_directory(const std::string& path)
{
    const std::string directory = std::filesystem::path(path).parent_path().string();
    const int descriptor = open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

} // namespace

Journal Journal::read(const std::string& path)
try {
    Journal journal(path);
    journal.file_ = vor::JsonLines(path, O_RDONLY);
    journal.load(false);
    return journal;
} catch (const vor::FileError& error) {
    if (error.error != ENOENT) {
        fail(path, error.what());
    }
    return Journal(path);
}

Journal Journal::open(const std::string& path, int flags, const std::string& gateway)
try {
    Journal journal(path);
    journal.file_ = vor::JsonLines(path, O_RDWR | O_APPEND | flags);
    const int file = journal.file_.descriptor();
    if (flock(file, LOCK_EX | LOCK_NB) != 0) {
        fail(path, errno == EWOULDBLOCK ? "in use by another vorcfg" : std::strerror(errno));
    }
    journal.load(true);
    journal.check_gateway(gateway);
    if (fchmod(file, 0600) != 0) {
        throw vor::FileError(errno);
    }
    if (journal.file_.empty()) {
        journal.append(GatewayNamed{gateway, true});
        sync_directory(path);
    } else if (journal.history_.gateway().empty() && !gateway.empty()) {
        journal.append(GatewayNamed{gateway, false});
    }
    return journal;
} catch (const vor::FileError& error) {
    fail(path, error.what());
}

void Journal::check_gateway(const std::string& gateway) const
{
    const std::string& known = history_.gateway();
    if (!gateway.empty() && !known.empty() && known != gateway) {
        fail(path_, fmt::format("belongs to gateway {}, not {}", vor::quoted(known), vor::quoted(gateway)));
    }
}

// Every line ends. One that does not was cut off when the process or the machine stopped, before the call that it
// announces was sent.
void Journal::load(bool repair)
{
    while (const auto line = file_.next()) {
        const std::uint64_t number = file_.number();
        const bool is_first = number == 1;
        if (is_first && !line->starts_with('{')) { // before anything of it is repaired
            not_a_journal(path_);
        }
        if (file_.torn() || (file_.at_end() && !is_first && !vor::Json::read(*line))) {
            vor::print_line(stderr, fmt::format("vorcfg: {}: line {} is incomplete{}", path_, number,
                                                repair ? " and was removed" : ""));
            if (repair) {
                file_.take_away();
            }
            return;
        }
        try {
            history_.take(record_in(*line, is_first));
        } catch (const vor::JsonError&) {
            fail(path_, fmt::format("line {} is not a valid record", number));
        } catch (const input::InputError& error) {
            fail(path_, fmt::format("line {}: {}", number, error.text));
        }
    }
}

void Journal::append(const Record& record, bool on_disk)
try {
    file_.append(text_of(record), on_disk);
    history_.take(record);
} catch (const vor::FileError& error) {
    fail(path_, error.what());
}

void Journal::begin(const call::PreparedCall& call, const Entry* takes_back)
{
    const auto number_of = [](const Entry* entry) {
        return entry != nullptr ? std::optional(entry->begun.number) : std::nullopt;
    };
    const call::CallKey key = call::key_of(call);
    append(CallBegun{.number = history_.entries().size() + 1,
                     .at = stamp(),
                     .file = call.place.file,
                     .line = call.place.line,
                     .key = key,
                     .replaces = number_of(history_.replaced_by(key)),
                     .takes_back = number_of(takes_back)});
}

// On disk with the next call that begins, or at the end.
void Journal::end(const call::PreparedCall& call, const call::CallResult& result)
{
    append(CallEnded{.number = history_.entries().size(),
                     .at = stamp(),
                     .outcome = std::string(call::name_of(result.verdict.outcome)),
                     .verdict = result.verdict.text,
                     .done = call::was_done(*call.row, result.verdict.outcome, result.seen)},
           false);
}

} // namespace vorcfg::site
