#include "site/journal.hpp"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include <fmt/core.h>

#include "site/clock.hpp"
#include "text/text.hpp"

namespace vorcfg {

using vor::Json;

namespace {

constexpr int version = 1;

[[noreturn]] void complain(const std::string& path, std::string_view why)
{
    throw Complaint{fmt::format("{}: {}", path, why), exit_journal};
}

std::string user()
{
    const passwd* const entry = getpwuid(getuid());
    return entry != nullptr ? entry->pw_name : std::to_string(getuid());
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

Journal::Journal(Journal&& other) noexcept
    : path_(std::move(other.path_)), descriptor_(std::exchange(other.descriptor_, -1)), size_(other.size_),
      history_(std::move(other.history_))
{
}

Journal::~Journal()
{
    close();
}

void Journal::close()
{
    if (descriptor_ >= 0) {
        ::close(std::exchange(descriptor_, -1));
    }
}

// Neither a device, whose rights would be changed, nor a pipe, which would never end.
bool Journal::open_file(int flags)
{
    descriptor_ = ::open(path_.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0600);
    struct stat found {};
    if (descriptor_ >= 0 && fstat(descriptor_, &found) == 0 && !S_ISREG(found.st_mode)) {
        complain(path_, "is no file");
    }
    return descriptor_ >= 0;
}

Journal Journal::read(const std::string& path)
{
    Journal journal(path);
    if (journal.open_file(O_RDONLY)) {
        journal.load(false);
    } else if (errno != ENOENT) {
        complain(path, std::strerror(errno));
    }
    return journal;
}

Journal Journal::reopen(const std::string& path)
{
    struct stat found {};
    if (stat(path.c_str(), &found) != 0) {
        complain(path, std::strerror(errno));
    }
    return open(path, {});
}

Journal Journal::open(const std::string& path, const std::string& gateway)
{
    Journal journal(path);
    if (!journal.open_file(O_RDWR | O_CREAT | O_APPEND)) {
        complain(path, std::strerror(errno));
    }
    if (flock(journal.descriptor_, LOCK_EX | LOCK_NB) != 0) {
        complain(path, errno == EWOULDBLOCK ? "another vorcfg is at work with this journal" : std::strerror(errno));
    }
    if (fchmod(journal.descriptor_, 0600) != 0) {
        complain(path, std::strerror(errno));
    }
    journal.load(true);
    const std::string& known = journal.history_.gateway();
    journal.check_gateway(gateway);
    if (journal.size_ == 0) {
        journal.append({{"vorcfg_journal", version}, {"gateway", gateway}, {"at", stamp(now())}}, true);
        sync_directory(path);
    } else if (known.empty() && !gateway.empty()) {
        journal.append({{"gateway", gateway}, {"at", stamp(now())}}, true);
    }
    return journal;
}

void Journal::check_gateway(const std::string& wanted) const
{
    const std::string& known = history_.gateway();
    if (!wanted.empty() && !known.empty() && known != wanted) {
        complain(path_, fmt::format("is of gateway {}, not of {}", vor::quoted(known), vor::quoted(wanted)));
    }
}

// Every line ends; one that does not was torn by what ended the process or the
// machine, before anything that it announces was sent.
void Journal::load(bool repair)
{
    const int copy = dup(descriptor_);
    const std::string text = content_of(copy < 0 ? nullptr : fdopen(copy, "r"), path_, unbounded);
    std::size_t number = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        number++;
        const std::string_view line = std::string_view{text}.substr(at, end - at);
        const bool last = end == std::string::npos || end + 1 == text.size();
        if (end == std::string::npos || (last && number > 1 && !Json::read(line))) {
            vor::print_line(stderr, fmt::format("vorcfg: {}: line {} is torn{}", path_, number,
                                                repair ? " and has been taken away" : ""));
            if (repair && ftruncate(descriptor_, static_cast<off_t>(at)) != 0) {
                complain(path_, std::strerror(errno));
            }
            break;
        }
        take(line, number);
        at = end + 1;
        size_ = at;
    }
}

void Journal::take(std::string_view line, std::size_t number)
{
    try {
        const Json record = Json::parse(line);
        if (number == 1) {
            if (!record.is_object() || !record.contains("vorcfg_journal")) {
                throw Complaint{"is no journal"};
            }
            if (record["vorcfg_journal"] != Json(version)) {
                throw Complaint{fmt::format("a journal of version {}, and this vorcfg knows {}",
                                            vor::dump(record["vorcfg_journal"]), version)};
            }
        }
        history_.take(record);
    } catch (const vor::JsonError&) {
        complain(path_, fmt::format("line {} is broken", number));
    } catch (const Complaint& complaint) {
        complain(path_, fmt::format("line {}: {}", number, complaint.text));
    }
}

// A line that does not fit on the disk is taken away again.
void Journal::append(const Json& record, bool synced)
{
    const std::string line = vor::dump(record) + '\n';
    ssize_t written;
    while ((written = ::write(descriptor_, line.data(), line.size())) < 0 && errno == EINTR) {}
    if (written != static_cast<ssize_t>(line.size()) || (synced && fdatasync(descriptor_) != 0)) {
        const int why = written >= 0 && written < static_cast<ssize_t>(line.size()) ? ENOSPC : errno;
        if (ftruncate(descriptor_, static_cast<off_t>(size_)) != 0) {
            complain(path_, std::strerror(errno));
        }
        complain(path_, std::strerror(why));
    }
    size_ += line.size();
    history_.take(record);
}

void Journal::begin(const Said& said, const Place& place, const Entry* replaces, const Entry* takes_back)
{
    const std::uint64_t number = history_.entries().size() + 1;
    Json record{{"begin", number}, {"at", stamp(now())}, {"by", user()}};
    if (!place.file.empty()) {
        record["file"] = place.file;
        record["line"] = place.line;
    }
    record["call"] = said.row->full_name();
    record["arguments"] = Json::parse(said.arguments);
    if (said.secret) {
        record["secret"] = true;
    }
    if (replaces != nullptr) {
        record["replaces"] = replaces->number;
    }
    if (takes_back != nullptr) {
        record["takes_back"] = takes_back->number;
    }
    append(record, true);
}

// On disk with the next call that begins, or at the end.
void Journal::end(const Verdict& verdict, std::optional<bool> done)
{
    append({{"end", history_.entries().size()},
            {"at", stamp(now())},
            {"outcome", name_of(verdict.outcome)},
            {"verdict", verdict.text},
            {"done", done ? Json(*done) : Json()}},
           false);
}

void Journal::pend()
{
    append({{"pending", history_.entries().size() + 1}, {"at", stamp(now())}}, true);
}

void Journal::pend_until(const std::string& until, int process)
{
    append({{"pending", history_.pending()->first}, {"until", until}, {"process", process}, {"at", stamp(now())}},
           true);
}

void Journal::confirm()
{
    append({{"confirmed", true}, {"at", stamp(now())}, {"by", user()}}, true);
}

void Journal::taken_back()
{
    append({{"taken_back", true}, {"at", stamp(now())}, {"by", user()}}, true);
}

void Journal::sync()
{
    fdatasync(descriptor_);
}

} // namespace vorcfg
