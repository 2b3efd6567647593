#include "owner.hpp"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <new>
#include <sys/mman.h>

#include "system.hpp"

namespace vorinfra {

namespace {

constexpr int second_shift = 32;

uint64_t own_mark()
{
    timespec time;
    clock_gettime(CLOCK_BOOTTIME, &time);
    return static_cast<uint64_t>(time.tv_sec) << second_shift | static_cast<uint32_t>(getpid());
}

pid_t process_of(uint64_t mark)
{
    return static_cast<pid_t>(static_cast<uint32_t>(mark));
}

// A process that nobody has waited for has ended, too, and one that started later only has the same number. What
// cannot be found out counts as alive.
bool has_ended(uint64_t mark)
{
    const pid_t process = process_of(mark);
    if (kill(process, 0) != 0 && errno == ESRCH) {
        return true;
    }
    char text[1024]; // of /proc/PID/stat
    snprintf(text, sizeof text, "/proc/%d/stat", process);
    const Descriptor file(open(text, O_RDONLY | O_CLOEXEC));
    const ssize_t size = file ? read(file.get(), text, sizeof text - 1) : -1;
    text[size > 0 ? size : 0] = '\0';
    const char* const behind_name = strrchr(text, ')'); // which may hold anything
    char state;
    unsigned long long start;
    return behind_name != nullptr &&
           sscanf(behind_name, ") %c %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %llu",
                  &state, &start) == 2 &&
           (state == 'Z' || state == 'X' ||
            start / static_cast<unsigned long>(sysconf(_SC_CLK_TCK)) > mark >> second_shift);
}

} // namespace

Owner* Owner::create()
{
    void* const memory = mmap(nullptr, sizeof(Owner), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    auto* const owner = new (memory) Owner;
    owner->mark_ = own_mark();
    return owner;
}

void Owner::forget(Owner* owner)
{
    if (owner != nullptr) {
        munmap(owner, sizeof(Owner));
    }
}

pid_t Owner::process() const
{
    return process_of(mark_);
}

bool Owner::take_over(int milliseconds)
{
    constexpr timespec moment{0, 2'000'000};
    const Deadline deadline(milliseconds);
    uint64_t mark = mark_;
    while (process_of(mark) != getpid()) {
        if (has_ended(mark)) {
            if (mark_.compare_exchange_strong(mark, own_mark())) {
                break;
            }
        } else if (deadline.remaining() > 0) {
            nanosleep(&moment, nullptr);
            mark = mark_;
        } else {
            return false;
        }
    }
    return true;
}

} // namespace vorinfra
