// A run, told as it goes.
#include <cerrno>
#include <cstdio>
#include <unistd.h>

#include <fmt/core.h>

#include "output/output.hpp"
#include "text/text.hpp"

namespace vorcfg {

int complain(const InputError& complaint, bool json)
{
    std::fflush(stdout);
    vor::print(stderr, json ? json_of(complaint) : text_of(complaint));
    const bool in_file = !complaint.place.file.empty(); // one line per error, unless somebody reads them
    if (!json && !complaint.hint.empty() && (!in_file || isatty(STDERR_FILENO) == 1)) {
        vor::print_line(stderr, fmt::format("hint: {}", complaint.hint));
    }
    return complaint.exit;
}

std::function<int(const InputError&)> complaining(bool json)
{
    return [json](const InputError& complaint) { return complain(complaint, json); };
}

// A terminal shows how far a long file is.
std::string Account::progress(std::size_t left) const
{
    constexpr std::size_t long_file = 20;
    if (calls_ < long_file || json_ || isatty(STDOUT_FILENO) != 1) {
        return "";
    }
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begun_;
    const std::size_t made = calls_ - left;
    return fmt::format("[{}/{} {:.0f}/s] ", made, calls_, static_cast<double>(made) / passed.count());
}

bool Account::tell(const PreparedCall& planned, const CallResult& report, std::size_t left)
{
    const std::string text = progress(left) + (json_ ? json_of(planned, report) : text_of(planned, report));
    errno = 0;
    vor::print(stdout, text);
    error_ = error_ != 0 || std::ferror(stdout) == 0 ? error_ : errno;
    return std::ferror(stdout) == 0;
}

int Account::finish(const Tally& tally, std::size_t left, bool interrupted)
{
    if (interrupted) {
        vor::print(stderr, "vorcfg: interrupted\n");
    }
    // whoever closed standard output is told on the other one
    errno = 0;
    vor::print(std::ferror(stdout) != 0 ? stderr : stdout, summary_(tally, left));
    error_ = error_ == 0 ? errno : error_;
    errno = error_; // for who complains of it in the end
    if (std::ferror(stdout) != 0) {
        return exit_no_output;
    }
    return interrupted ? exit_ended : tally.worst;
}

} // namespace vorcfg
