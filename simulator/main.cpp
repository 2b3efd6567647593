#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>

#include <vorinfra_manager.h>

#include "faults/parse.hpp"
#include "process/commands.hpp"
#include "process/control.hpp"
#include "process/options.hpp"
#include "process/server.hpp"
#include "text/text.hpp"

namespace {

int show(const vorsim::Options& options)
{
    const char* const directory = vorinfra_directory();
    if (directory == nullptr) {
        throw vorsim::UsageError("the platform directory cannot be used");
    }
    const std::string answer = vorsim::ask_running(directory, options.json ? "show json" : "show");
    if (std::fputs(answer.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
        throw std::runtime_error(fmt::format("cannot write to standard output: {}", std::strerror(errno)));
    }
    return 0;
}

int command(const std::string& request)
{
    const char* const directory = vorinfra_directory();
    if (directory == nullptr) {
        throw vorsim::UsageError("the platform directory cannot be used");
    }
    const std::string answer = vorsim::ask_running(directory, request);
    const bool done = !answer.starts_with(vorsim::not_done);
    vor::print(done ? stdout : stderr, done ? answer : fmt::format("vorsim: {}", answer));
    return done ? 0 : 1;
}

int run(const std::vector<std::string>& arguments)
{
    const vorsim::Options options = vorsim::read_options(arguments);
    if (options.help) {
        std::fputs(vorsim::help_text, stdout);
        return 0;
    }
    if (!options.command.empty()) {
        return command(options.command);
    }
    return options.show ? show(options) : vorsim::Server(options).run();
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run({argv + 1, argv + argc});
    } catch (const vorsim::UsageError& error) {
        vor::print_line(stderr, fmt::format("vorsim: {} (vorsim --help tells the options)", error.what()));
        return 2;
    } catch (const vorsim::faults::BadFile& error) {
        vor::print_line(stderr, error.what());
        return 2;
    } catch (const std::exception& error) {
        vor::print_line(stderr, fmt::format("vorsim: {}", error.what()));
        return 1;
    }
}
