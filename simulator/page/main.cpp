// vorsim-page: serves the page of the gateway that started it. Standard input holds the link's token in its first line
// and ends with the gateway; standard output is the listening port.
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string_view>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fmt/core.h>

#include "page/site.hpp"
#include "text/file.hpp"
#include "text/text.hpp"

namespace {

using vorsim::sockets::Descriptor;

// 0 if it is not a TCP port.
std::uint16_t port_of(const Descriptor& listener)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    const bool known = getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &size) == 0;
    return known && address.sin_family == AF_INET ? ntohs(address.sin_port) : std::uint16_t{0};
}

} // namespace

int main(int argc, char** argv)
{
    for (const int signal_number : {SIGTERM, SIGINT, SIGHUP, SIGPIPE}) {
        std::signal(signal_number, SIG_IGN); // it ends when the gateway does
    }
    vor::ignore_size_signal();
    try {
        const Descriptor listener(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        const std::uint16_t port = port_of(listener);
        std::string token;
        if (port == 0 || !std::getline(std::cin, token)) {
            vor::print_line(stderr, "vorsim-page: start it with vorsim --http PORT");
            return 2;
        }
        const Descriptor nothing(open("/dev/null", O_WRONLY | O_CLOEXEC));
        dup2(nothing.get(), STDOUT_FILENO);
        vorsim::sockets::Loop loop;
        loop.watch(STDIN_FILENO, [&loop] { loop.stop(); });
        const bool control = argc == 2 && std::string_view(argv[1]) == "--control";
        const vorsim::page::Site site(loop, listener.get(), {.port = port, .token = token, .control = control});
        loop.run();
        return 0;
    } catch (const std::exception& error) {
        vor::print_line(stderr, fmt::format("vorsim-page: {}", error.what()));
        return 1;
    }
}
