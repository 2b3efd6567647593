#include <cerrno>
#include <cstdio>

#include <sys/prctl.h>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "input/options.hpp"
#include "input/secret.hpp"
#include "output/output.hpp"
#include "text/file.hpp"
#include "text/text.hpp"

using namespace vorcfg;

namespace {

int finished(int code)
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        vor::print_line(stderr, fmt::format("vorcfg: standard output: {}", vor::reason_of(errno)));
        return input::exit_no_output;
    }
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    vor::ignore_size_signal();
    input::take_descriptors();
    prctl(PR_SET_DUMPABLE, 0); // keeps secrets from core files and other processes
    input::Options options;
    try {
        input::take_options(input::words_of({argv + 1, argv + argc}), options);
        return finished(input::run(options));
    } catch (const input::InputError& error) {
        return finished(output::print_error(error, options.json));
    }
}
