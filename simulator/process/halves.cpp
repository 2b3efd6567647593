#include "process/halves.hpp"

#include <linux/sockios.h>
#include <sys/ioctl.h>

#include "process/unix_socket.hpp"

namespace vorsim {

bool answer_unread(int descriptor)
{
    int bytes = 0;
    return ioctl(descriptor, SIOCOUTQ, &bytes) == 0 && bytes > 0;
}

// Nothing tells that a client has read: it is looked for now and then.
std::optional<Loop::Time> Halves::deadline() const
{
    return rests_.empty() ? std::nullopt
                          : std::optional(std::chrono::steady_clock::now() + std::chrono::milliseconds(10));
}

void Halves::on_deadline()
{
    std::erase_if(rests_, [](const auto& rest) {
        return !answer_unread(rest.first) && (send_now(rest.first, rest.second), true);
    });
}

} // namespace vorsim
