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
#include "server/options.hpp"
#include "server/server.hpp"
#include "text/text.hpp"

namespace {

struct CannotStart : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What cannot be begun is told like bad usage: nothing was done.
std::unique_ptr<vorsim::Server> start(const vorsim::Options& options)
{
    try {
        return std::make_unique<vorsim::Server>(options);
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
        std::fputs((vorsim::help_text() + vorsim::client::help()).c_str(), stdout);
        return 0;
    }
    return start(options)->run();
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
