#include <cstdio>

#include <fmt/core.h>

#include "input/complaint.hpp"
#include "input/secret.hpp"
#include "input/terminal.hpp"
#include "prompt/lines.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

class PlainLines : public Lines {
public:
    explicit PlainLines(bool prompted) : prompted_(prompted) {}

    std::optional<std::string> next() override
    {
        if (!prompted_) {
            return read();
        }
        Waiting for_line;
        vor::print(stdout, prompt_text);
        const bool there = for_line.wait();
        auto line = there ? read() : std::optional<std::string>("");
        vor::print(stdout, there && line ? "" : "\n");
        return line;
    }

private:
    std::optional<std::string> read()
    {
        std::string line;
        int byte;
        while ((byte = std::getc(stdin)) != EOF && byte != '\n') {
            line += static_cast<char>(byte);
            if (line.size() > Bounds().line) {
                throw Complaint{fmt::format("a line of more than {} bytes", Bounds().line)};
            }
        }
        return byte == EOF && line.empty() ? std::nullopt : std::optional(std::move(line));
    }

    const bool prompted_;
};

} // namespace

std::unique_ptr<Lines> plain_lines(bool prompted)
{
    return std::make_unique<PlainLines>(prompted);
}

} // namespace vorcfg
