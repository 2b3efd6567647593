#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

#include "client/ask.hpp"
#include "client/commands.hpp"
#include "faults/parse.hpp"
#include "record/expectation.hpp"
#include "server/options.hpp"
#include "server/server.hpp"
#include "text/file.hpp"
#include "text/text.hpp"

namespace {

// A closed standard descriptor would be reused by a socket, and output written to it.
void keep_standard_descriptors()
{
    int descriptor = STDIN_FILENO;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = open("/dev/null", O_RDWR | O_CLOEXEC);
    }
    close(descriptor);
}

} // namespace

int main(int argc, char** argv)
{
    keep_standard_descriptors();
    vor::ignore_size_signal();
    bool starts = false;
    const int invalid = argc > 1 && std::string_view(argv[1]) == "run" ? 125 : 2; // others are the command's
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        if (const auto code = vorsim::client::run(arguments)) {
            return *code;
        }
        const vorsim::server::Options options = vorsim::server::read_options(arguments);
        if (options.help) {
            std::fputs(vorsim::client::help_text().c_str(), stdout);
            return 0;
        }
        starts = true;
        vorsim::server::Server server(options);
        starts = false;
        return server.run();
    } catch (const vor::UnknownArgument& error) {
        vor::print_line(stderr, fmt::format("vorsim: {}\nhint: vorsim --help", vor::printable(error.what())));
        return invalid;
    } catch (const vorsim::server::UsageError& error) {
        vor::print_line(stderr, fmt::format("vorsim: {}", vor::printable(error.what())));
        return invalid;
    } catch (const vorsim::record::BadExpectations& error) {
        vor::print_line(stderr, vor::printable(error.what()));
        return invalid;
    } catch (const vorsim::faults::BadFile& error) {
        vor::print_line(stderr, vor::printable(error.what()));
        return invalid;
    } catch (const vorsim::client::NotRunning& error) {
        vor::print_line(stderr, fmt::format("vorsim: {}", vor::printable(error.what())));
        return 4;
    } catch (const std::exception& error) {
        vor::print_line(stderr, fmt::format("vorsim: {}", vor::printable(error.what())));
        return starts || invalid != 2 ? invalid : 1; // failing to start counts as invalid usage: nothing was done
    }
}
