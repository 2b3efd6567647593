#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "prompt/lines.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

class PlainLines : public Lines {
public:
    explicit PlainLines(bool prompted) : prompted_(prompted) {}
    PlainLines(const PlainLines&) = delete;
    PlainLines& operator=(const PlainLines&) = delete;
    ~PlainLines() override { std::free(line_); }

    std::optional<std::string> next() override
    {
        struct sigaction ends_read {};
        struct sigaction before {};
        ends_read.sa_handler = [](int) {};
        if (prompted_) {
            vor::print(stdout, prompt_text);
            sigaction(SIGINT, &ends_read, &before);
        }
        errno = 0;
        const ssize_t size = getline(&line_, &room_, stdin);
        const bool interrupted = size < 0 && errno == EINTR;
        if (prompted_) {
            sigaction(SIGINT, &before, nullptr);
            vor::print(stdout, size < 0 ? "\n" : "");
        }
        if (size < 0) {
            std::clearerr(stdin);
            return interrupted ? std::optional<std::string>("") : std::nullopt;
        }
        std::string line(line_, static_cast<std::size_t>(size));
        if (line.ends_with('\n')) {
            line.pop_back();
        }
        return line;
    }

private:
    const bool prompted_;
    char* line_ = nullptr;
    std::size_t room_ = 0;
};

} // namespace

std::unique_ptr<Lines> plain_lines(bool prompted)
{
    return std::make_unique<PlainLines>(prompted);
}

} // namespace vorcfg
