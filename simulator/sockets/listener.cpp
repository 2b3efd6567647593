#include "sockets/listener.hpp"

#include <cerrno>

namespace vorsim {
namespace {

constexpr std::chrono::milliseconds before_next_try{100};

}

Door::Door(Loop& loop, const std::string& path, MakeRoom make_room, OnClient on_client)
    : loop_(loop), listener_(path), make_room_(std::move(make_room)), on_client_(std::move(on_client))
{
    open();
    loop_.at([this] { return opens_at_; }, [this] { open(); });
}

void Door::open()
{
    opens_at_.reset();
    loop_.watch(listener_.descriptor(), [this] { accept_client(); });
}

void Door::close_for_a_while()
{
    loop_.forget(listener_.descriptor());
    opens_at_ = std::chrono::steady_clock::now() + before_next_try;
}

void Door::accept_client()
{
    if (!make_room_(false)) {
        close_for_a_while();
        return;
    }
    Descriptor socket = listener_.accept();
    if (socket.get() >= 0) {
        on_client_(std::move(socket));
    } else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
        make_room_(true);
        close_for_a_while();
    }
}

} // namespace vorsim
