// system.hpp: descriptors that close themselves, waits that end, a lock.
#pragma once

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace vorinfra {

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (number_ >= 0) {
            const int cause = errno;
            close(number_);
            errno = cause;
        }
    }
    explicit operator bool() const { return number_ >= 0; }
    int get() const { return number_; }
    int release()
    {
        const int number = number_;
        number_ = -1;
        return number;
    }

private:
    int number_;
};

class Deadline {
public:
    explicit Deadline(int milliseconds) : end_(now() + milliseconds) {}

    int remaining() const // milliseconds, 0 when it has passed
    {
        const int64_t left = end_ - now();
        return left > 0 ? static_cast<int>(left) : 0;
    }

    // Whether the descriptor became ready in time.
    bool wait(int descriptor, short events) const
    {
        pollfd polled{descriptor, events, 0};
        int ready;
        do {
            ready = poll(&polled, 1, remaining());
        } while (ready < 0 && errno == EINTR);
        return ready > 0;
    }

private:
    static int64_t now()
    {
        timespec time;
        clock_gettime(CLOCK_MONOTONIC, &time);
        return static_cast<int64_t>(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
    }

    int64_t end_;
};

inline bool limit_blocking(int descriptor, int option, int milliseconds) // SO_RCVTIMEO or SO_SNDTIMEO
{
    timeval limit{};
    limit.tv_sec = milliseconds / 1000;
    limit.tv_usec = static_cast<suseconds_t>(milliseconds % 1000) * 1000;
    return setsockopt(descriptor, SOL_SOCKET, option, &limit, sizeof limit) == 0;
}

class Lock {
public:
    explicit Lock(pthread_mutex_t& mutex) : mutex_(mutex) { pthread_mutex_lock(&mutex_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() { pthread_mutex_unlock(&mutex_); }

private:
    pthread_mutex_t& mutex_;
};

} // namespace vorinfra
