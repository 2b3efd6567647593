// Timers. The only one that the configuration library starts reboots the
// machine, so they are recorded, and run only on request.
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "log.hpp"
#include "settings.hpp"
#include "system.hpp"
#include "vorinfra_inspect.h"

namespace vorinfra {

namespace {

struct Timer {
    VOR_TIMER_HANDLE handle; // given to the caller
    Timer* next;
    vor_uint32 milliseconds;
    unsigned starts; // a running timer that is started again fires once
    bool fired;
};

struct Run {
    Timer* timer;
    unsigned start;
    timespec end;
};

pthread_mutex_t guard = PTHREAD_MUTEX_INITIALIZER;
[[maybe_unused]] const int at_fork = pthread_atfork(
    [] { pthread_mutex_lock(&guard); }, [] { pthread_mutex_unlock(&guard); }, [] { pthread_mutex_unlock(&guard); });
Timer* timers; // the oldest first, never freed

Timer** link_to(const VOR_TIMER_HANDLE* handle)
{
    Timer** link = &timers;
    while (*link != nullptr && &(*link)->handle != handle) {
        link = &(*link)->next;
    }
    return link;
}

void* wait_and_call(void* argument)
{
    const Run run = *static_cast<Run*>(argument);
    free(argument);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &run.end, nullptr) == EINTR) {}
    {
        const Lock lock(guard);
        if (run.timer->starts != run.start) {
            return nullptr;
        }
        run.timer->fired = true;
    }
    if (run.timer->handle.timer_func_callback != nullptr) {
        run.timer->handle.timer_func_callback();
    }
    return nullptr;
}

// Signals are left to the program's own threads.
bool run_in_thread(Run* run)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    pthread_t thread;
    const int failed = pthread_create(&thread, nullptr, wait_and_call, run);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (failed == 0) {
        pthread_detach(thread);
    }
    return failed == 0;
}

bool launch(Timer* timer, unsigned start, vor_uint32 milliseconds)
{
    auto* const run = static_cast<Run*>(malloc(sizeof(Run)));
    if (run != nullptr) {
        *run = {timer, start, {}};
        clock_gettime(CLOCK_MONOTONIC, &run->end);
        run->end.tv_sec += static_cast<time_t>(milliseconds / 1000);
        run->end.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
        if (run->end.tv_nsec >= 1000000000) {
            run->end.tv_nsec -= 1000000000;
            run->end.tv_sec++;
        }
        if (run_in_thread(run)) {
            return true;
        }
        free(run);
    }
    report("cannot run the timer: no memory or no thread");
    return false;
}

} // namespace

} // namespace vorinfra

using namespace vorinfra;

VOR_TIMER_HANDLE* vor_timer_create(vor_uint32, void* context, VOR_TIMER_CALLBACK callback)
{
    auto* const timer = static_cast<Timer*>(calloc(1, sizeof(Timer)));
    if (timer == nullptr) {
        return nullptr;
    }
    timer->handle = {callback, context};
    const Lock lock(guard);
    *link_to(nullptr) = timer;
    return &timer->handle;
}

vor_int32 vor_timer_start(VOR_TIMER_HANDLE* timer, vor_uint32 milliseconds, vor_uint32)
{
    if (timer == nullptr) {
        return -1;
    }
    const auto run = timers_run();
    Timer* started;
    unsigned start;
    {
        const Lock lock(guard);
        started = *link_to(timer);
        if (started == nullptr || !run) {
            return -1;
        }
        started->milliseconds = milliseconds;
        started->fired = false;
        start = ++started->starts;
    }
    return !*run || launch(started, start, milliseconds) ? 0 : -1;
}

unsigned vorinfra_timers(VORINFRA_TIMER* copies, unsigned room)
{
    const Lock lock(guard);
    unsigned count = 0;
    for (const Timer* timer = timers; timer != nullptr; timer = timer->next, count++) {
        if (count < room) {
            copies[count] = {timer->handle.timer_func_callback, timer->handle.context, timer->milliseconds,
                             timer->starts != 0, timer->fired};
        }
    }
    return count;
}
