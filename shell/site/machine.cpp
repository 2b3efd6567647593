#include "site/machine.hpp"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/core.h>

#include "output/output.hpp"
#include "text/json_lines.hpp"
#include "text/parse.hpp"

namespace vorcfg::site {

namespace {

class SystemClock final : public Clock {
public:
    Moment now() const override
    {
        timespec time{};
        clock_gettime(CLOCK_BOOTTIME, &time); // goes on while the machine sleeps
        const auto since_boot = std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
        return {boot(), std::chrono::duration_cast<std::chrono::milliseconds>(since_boot), stamp({})};
    }

    // SOURCE_DATE_EPOCH sets the present, so that output can be reproduced.
    std::string stamp(std::chrono::seconds from_now) const override
    {
        const char* const fixed = std::getenv("SOURCE_DATE_EPOCH");
        const auto set = fixed != nullptr ? vor::number_in<std::time_t>(fixed) : std::nullopt;
        const std::time_t time = set.value_or(std::time(nullptr)) + static_cast<std::time_t>(from_now.count());
        std::tm parts{};
        gmtime_r(&time, &parts);
        char text[32];
        return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
    }

private:
    static const std::string& boot()
    {
        static const std::string id = [] {
            std::string text;
            std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), text);
            return text;
        }();
        return id;
    }
};

class FileOnDisk final : public JournalFile {
public:
    FileOnDisk(const std::string& path, Access access)
        : folder_(std::filesystem::path(path).parent_path()), lines_(path, flags_of(access))
    {
        struct stat status {};
        require(fstat(lines_.descriptor(), &status) == 0);
        if (geteuid() != 0 && status.st_uid != geteuid() && status.st_uid != 0) {
            throw vor::FileError(fmt::format("it belongs to user {}", status.st_uid)); // who may write what is reverted
        }
        if (access != Access::read) {
            require(flock(lines_.descriptor(), LOCK_EX | LOCK_NB) == 0);
        }
    }

    std::string content() override
    {
        std::string all;
        while (const auto line = lines_.next()) {
            all += *line;
            all += lines_.torn() ? "" : "\n";
        }
        return all;
    }

    void truncate(std::size_t size) override
    {
        make_private();
        require(ftruncate(lines_.descriptor(), static_cast<off_t>(size)) == 0);
    }

    void append(std::string_view lines, bool on_disk) override
    {
        make_private();
        lines_.append(lines.substr(0, lines.size() - 1), on_disk);
    }

    void overwrite(std::size_t offset, std::string_view text) override
    {
        // what is open to append would write at its end
        const int file = ::open(fmt::format("/proc/self/fd/{}", lines_.descriptor()).c_str(), O_WRONLY | O_CLOEXEC);
        const ssize_t written = pwrite(file, text.data(), text.size(), static_cast<off_t>(offset));
        const bool is_there = written == static_cast<ssize_t>(text.size()) && fdatasync(file) == 0;
        const int error = errno;
        ::close(file);
        errno = error;
        require(is_there);
    }

    void sync() override { require(fdatasync(lines_.descriptor()) == 0); }

    // A new file's name is on disk when its folder is.
    void sync_name() override
    {
        const int descriptor = ::open(folder_.empty() ? "." : folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (descriptor >= 0) {
            fsync(descriptor);
            ::close(descriptor);
        }
    }

private:
    static int flags_of(Access access)
    {
        const int to_write = O_RDWR | O_APPEND | (access == Access::create ? O_CREAT | O_NOFOLLOW : 0);
        return access == Access::read ? O_RDONLY : to_write;
    }

    static void require(bool holds)
    {
        if (!holds) {
            throw vor::FileError(errno);
        }
    }

    // Not before it is known to be a journal.
    void make_private()
    {
        require(is_private_ || fchmod(lines_.descriptor(), 0600) == 0);
        is_private_ = true;
    }

    const std::string folder_;
    vor::JsonLines lines_;
    bool is_private_ = false;
};

class DiskOfThisMachine final : public Disk {
public:
    std::unique_ptr<JournalFile> open(const std::string& path, Access access) override
    {
        return std::make_unique<FileOnDisk>(path, access);
    }
};

} // namespace

Machine this_machine(bool json)
{
    static SystemClock clock;
    static DiskOfThisMachine disk;
    const auto note = [json](const std::string& text) { output::print_notice(text, {}, json, stderr); };
    return {clock, disk, note, std::make_shared<SecretKey>(secret_key_path(), note)};
}

namespace {

// Far behind the journal's end.
struct flock waiting_lock()
{
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(1) << 30;
    lock.l_len = 1;
    return lock;
}

} // namespace

bool hold_waiting(int journal)
{
    struct flock lock = waiting_lock();
    return fcntl(journal, F_OFD_SETLKW, &lock) == 0;
}

bool has_waiter(const std::string& journal)
{
    const int descriptor = open(journal.c_str(), O_RDONLY | O_CLOEXEC);
    struct flock lock = waiting_lock();
    const bool waits = descriptor >= 0 && fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    close(descriptor);
    return waits;
}

namespace {

std::string cut(std::string_view stamp, std::string_view example)
{
    const std::size_t day = example.find('T');
    return stamp.size() < example.size()
               ? std::string(stamp)
               : fmt::format("{} {} UTC", stamp.substr(0, day), stamp.substr(day + 1, example.size() - day - 1));
}

} // namespace

std::string minute_of(std::string_view stamp)
{
    return cut(stamp, "2026-05-12T10:04");
}

std::string second_of(std::string_view stamp)
{
    return cut(stamp, "2026-05-12T10:04:00");
}

} // namespace vorcfg::site
