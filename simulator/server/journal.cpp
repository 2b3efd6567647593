#include "server/journal.hpp"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/core.h>

namespace vorsim::server {
namespace {

// Whether it begins like a journal of this version or the first, as far as it was written.
bool begins_as_a_journal(int file)
{
    char bytes[10] = {};
    const ssize_t size = pread(file, bytes, sizeof bytes, 0);
    const std::string_view begin(bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    const auto agree = [&](std::string_view known) {
        return known.substr(0, begin.size()) == begin.substr(0, known.size());
    };
    return size >= 0 && (agree("{\"journal\":") || agree("{\"seq\":"));
}

// A symbolic link, or a file with a second hard link, may be somebody else's file.
vor::JsonLines taken_over(const std::string& path, bool made)
{
    vor::JsonLines file(path, O_RDWR | O_APPEND | O_NOFOLLOW | (made ? O_CREAT | O_EXCL : 0));
    struct stat status {};
    if (fstat(file.descriptor(), &status) != 0) {
        throw vor::FileError(errno);
    }
    if (status.st_uid != geteuid()) {
        throw std::runtime_error(fmt::format("it belongs to user {}", status.st_uid));
    }
    if (status.st_nlink != 1) {
        throw std::runtime_error("it has a second hard link");
    }
    if (!begins_as_a_journal(file.descriptor())) {
        throw std::runtime_error("it is not a journal");
    }
    if (fchmod(file.descriptor(), 0600) != 0) {
        throw vor::FileError(errno);
    }
    while (const auto line = file.next()) {
        if (file.torn() && !line->starts_with('{')) {
            throw std::runtime_error("it is not a journal");
        }
        if (file.torn()) { // an unfinished line of a killed process is removed
            file.take_away();
        }
    }
    return file;
}

std::string cannot_write(const std::string& path, std::string_view why)
{
    return fmt::format("cannot write the journal {}: {}", path, why);
}

} // namespace

MessageJournal::MessageJournal(const std::string& path) : path_(path)
{
    std::error_code ignored;
    made_ = !std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
    try {
        file_ = taken_over(path, made_);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(cannot_write(path, error.what()));
    }
}

MessageJournal::~MessageJournal()
{
    if (made_ && file_.is_open() && file_.empty()) {
        unlink(path_.c_str());
    }
}

void MessageJournal::write(const std::string& line)
{
    if (!kept()) {
        return;
    }
    try {
        file_.append(line);
    } catch (const vor::FileError& error) {
        why_ = fmt::format("vorsim: {}", cannot_write(path_, error.what()));
    }
}

} // namespace vorsim::server
