// load CLIENTS CALLS: so many clients make so many answered calls each, all at once, to the gateway of this directory.
// Prints calls a second.
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include <sys/wait.h>
#include <unistd.h>

#include <device_mgmt.h>

namespace {

constexpr vor_uint16 first_sap = 0x2000;

int make_calls(int client, long calls)
{
    if (vor_cfg_create_ipc_endpoint(static_cast<vor_uint16>(first_sap + client)) != 0) {
        return 1;
    }
    for (long call = 0; call < calls; call++) {
        if (vor_cfg_set_gpio_direction(static_cast<vor_int16>(call % 64), 1, static_cast<vor_int16>(client)) != 0) {
            std::fprintf(stderr, "load: client %d: call %ld was not accepted\n", client, call);
            return 1;
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const int clients = argc == 3 ? std::atoi(argv[1]) : 0;
    const long calls = argc == 3 ? std::atol(argv[2]) : 0;
    if (clients < 1 || calls < 1) {
        std::fputs("usage: load CLIENTS CALLS\n", stderr);
        return 2;
    }
    const auto start = std::chrono::steady_clock::now();
    for (int client = 0; client < clients; client++) {
        if (fork() == 0) {
            _exit(make_calls(client, calls));
        }
    }
    int failed = 0;
    for (int status; wait(&status) > 0;) {
        failed += status != 0 ? 1 : 0;
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    std::printf("%.0f\n", static_cast<double>(clients * calls) / taken.count());
    return failed == 0 ? 0 : 1;
}
