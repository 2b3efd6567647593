// owner.hpp: the process that an endpoint belongs to, as every process that inherited the endpoint sees it.
#pragma once

#include <atomic>
#include <cstdint>
#include <sys/types.h>

namespace vorinfra {

// In memory that forked processes share.
class Owner {
public:
    static Owner* create(); // this process; null with errno
    static void forget(Owner* owner);

    pid_t process() const;

    // Whether this process is the owner, or can become it because the owner ended; waits for that to happen.
    bool take_over(int milliseconds);

private:
    static_assert(std::atomic<uint64_t>::is_always_lock_free, "it is shared by processes");
    std::atomic<uint64_t> mark_; // the process, and the second in which it became the owner
};

} // namespace vorinfra
