// unix_socket.hpp: descriptors and Unix stream sockets.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace vorsim {

class Descriptor {
public:
    explicit Descriptor(int descriptor = -1) : descriptor_(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~Descriptor();

    int get() const { return descriptor_; }

private:
    int descriptor_;
};

// The path is served already, by a process that lives.
struct InUse : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A listening socket; its path goes with it.
class Listener {
public:
    // Takes a dead owner's path over. Throws InUse, or runtime_error.
    explicit Listener(std::string path);
    Listener(Listener&& other) noexcept : path_(std::exchange(other.path_, {})), socket_(std::move(other.socket_)) {}
    Listener& operator=(Listener&&) = delete;
    ~Listener();

    int descriptor() const { return socket_.get(); }
    // The next client, not blocking; -1 inside when there is none.
    Descriptor accept() const;

private:
    std::string path_;
    Descriptor socket_;
};

// Connected, or -1 inside with errno set.
Descriptor connect_to(const std::string& path);

// All of it at once, without waiting and without a signal.
bool send_now(int descriptor, const std::string& bytes);

} // namespace vorsim
