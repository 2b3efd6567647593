// Sockets, timers, memory, and the shell command that no test may run.
#include "state.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstring>

namespace fake {

namespace {

constexpr vor_int32 the_descriptor = 9;

VOR_UNIX_SOCKET the_socket = {the_descriptor, 0, 0, nullptr};
VOR_TIMER_HANDLE the_timer = {};

const char* null_mark(const void* pointer)
{
    return pointer == nullptr ? " null" : "";
}

} // namespace

VOR_TIMER_CALLBACK timer_callback()
{
    return state.timer_callback;
}

int allocations()
{
    return state.allocations;
}

int live_allocations()
{
    return static_cast<int>(state.memory.size());
}

bool allocation_failed()
{
    return script.failing_allocation != 0 && state.allocations >= script.failing_allocation;
}

} // namespace fake

using namespace fake;

void* vor_socket_create(vor_uchar domain, vor_uchar type, vor_uchar protocol)
{
    note(text_of("socket ", +domain, " ", +type, " ", +protocol));
    return script.socket_missing ? nullptr : &the_socket;
}

vor_int32 vor_socket_config_unix(void* socket, vor_char* path)
{
    note(text_of("unix", null_mark(socket), " ", path));
    return script.config_result;
}

vor_int32 vor_socket_connect(void* socket, vor_uchar option)
{
    note(text_of("connect", null_mark(socket), " ", +option));
    return script.connect_result;
}

vor_int32 vor_socket_close(void* socket, vor_uchar option)
{
    note(text_of("close", null_mark(socket), " ", +option));
    return script.close_result;
}

vor_int32 vor_send(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags)
{
    note(text_of("send ", fd, " ", count, " ", flags, " `",
                 spelt({static_cast<char*>(buffer), static_cast<size_t>(count)}), "`"));
    const auto result = script.socket_sends.find(++state.sends);
    return result == script.socket_sends.end() ? count : result->second;
}

vor_int32 vor_recv(vor_int32 fd, void* buffer, vor_int32 count, vor_int32 flags)
{
    note(text_of("recv ", fd, " ", count, " ", flags));
    const auto nth = static_cast<size_t>(state.receives++);
    const std::string reply = nth < script.replies.size() ? script.replies[nth] : "";
    const auto length = std::min(reply.size(), static_cast<size_t>(count));
    std::memcpy(buffer, reply.data(), length);
    const auto result = script.receives.find(state.receives);
    return result == script.receives.end() ? static_cast<vor_int32>(length) : result->second;
}

VOR_TIMER_HANDLE* vor_timer_create(vor_uint32 option, void* context, VOR_TIMER_CALLBACK callback)
{
    step('t');
    note(text_of("timer ", option, null_mark(context)));
    state.timer_callback = callback;
    return script.timer_missing ? nullptr : &the_timer;
}

vor_int32 vor_timer_start(VOR_TIMER_HANDLE* timer, vor_uint32 milliseconds, vor_uint32 option)
{
    step('g');
    note(text_of("start", null_mark(timer), " ", milliseconds, " ", option));
    return -1;
}

void vor_dbg_log(vor_uint16 level_mask, const char* format, ...)
{
    step('l');
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    note(text_of("log ", level_mask, " `", spelt(text), "`"));
}

// Stands in front of the C library's: no test reboots the machine.
extern "C" __attribute__((visibility("default"))) int system(const char* command)
{
    note(text_of("system `", command, "`"));
    return -1;
}

void* vor_malloc(vor_uint32 size)
{
    return vor_realloc(nullptr, size);
}

// Always moves, so that a stale pointer is a use after free.
void* vor_realloc(void* memory, vor_uint32 size)
{
    ++state.allocations;
    if (allocation_failed() && !(script.memory_recovers && state.allocations > script.failing_allocation)) {
        return nullptr;
    }
    std::vector<vor_uchar> fresh(size, pattern);
    if (memory != nullptr) {
        const auto old = state.memory.find(memory);
        if (old == state.memory.end()) {
            note("realloc of memory that is not the platform's");
            return nullptr;
        }
        std::copy_n(old->second.begin(), std::min<size_t>(size, old->second.size()), fresh.begin());
        state.memory.erase(old);
    }
    void* address = fresh.data();
    state.memory.emplace(address, std::move(fresh));
    return address;
}

void vor_free(void* memory)
{
    if (memory != nullptr && state.memory.erase(memory) == 0) {
        note("free of memory that is not the platform's");
    }
}
