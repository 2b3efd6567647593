#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

#include "client/commands.hpp"
#include "faults/parse.hpp"
#include "page/process.hpp"
#include "server/options.hpp"
#include "server/server.hpp"
#include "text/text.hpp"

namespace {

struct CannotStart : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What cannot be begun is told like bad usage: nothing was done.
template <class Thing, class... Arguments>
std::unique_ptr<Thing> start(const Arguments&... arguments)
{
    try {
        return std::make_unique<Thing>(arguments...);
    } catch (const vorsim::UsageError&) {
        throw;
    } catch (const vorsim::faults::BadFile&) {
        throw;
    } catch (const std::exception& error) {
        throw CannotStart(error.what());
    }
}

// One that the starter closed would become a socket's, and be written on.
void keep_standard_descriptors()
{
    int descriptor = STDIN_FILENO;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = open("/dev/null", O_RDWR | O_CLOEXEC);
    }
    close(descriptor);
}

int run(const std::vector<std::string>& arguments)
{
    if (const auto code = vorsim::client::run(arguments)) {
        return *code;
    }
    const vorsim::Options options = vorsim::read_options(arguments);
    if (options.help) {
        std::fputs(vorsim::help_text, stdout);
        std::fputs(vorsim::client::help().c_str(), stdout);
        return 0;
    }
    std::unique_ptr<vorsim::page::Process> page;
    if (options.http) {
        page = start<vorsim::page::Process>(*options.http, options.http_control);
    }
    const auto server = start<vorsim::Server>(options);
    if (page != nullptr) {
        page->open();
        server->accompany({.announcement = fmt::format("vorsim: the page is at {}", page->link()),
                           .descriptor = page->descriptor(),
                           .fate = [&page] { return page->fate(); }});
    }
    const int code = server->run();
    page.reset(); // before the sockets go, by which others know the end
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    keep_standard_descriptors();
    try {
        return run({argv + 1, argv + argc});
    } catch (const vorsim::UsageError& error) {
        vor::print_line(stderr, fmt::format("vorsim: {} (vorsim --help tells the options)", error.what()));
        return 2;
    } catch (const CannotStart& error) {
        vor::print_line(stderr, fmt::format("vorsim: {}", error.what()));
        return 2;
    } catch (const vorsim::faults::BadFile& error) {
        vor::print_line(stderr, error.what());
        return 2;
    } catch (const std::exception& error) {
        vor::print_line(stderr, fmt::format("vorsim: {}", error.what()));
        return 1;
    }
}
