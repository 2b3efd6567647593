#include <cstdio>
#include <cstdlib>

#include "prompt/lines.hpp"
#include "prompt/waiting.hpp"
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
        const ssize_t size = getline(&line_, &room_, stdin);
        if (size < 0) {
            return std::nullopt;
        }
        std::string line(line_, static_cast<std::size_t>(size));
        if (line.ends_with('\n')) {
            line.pop_back();
        }
        return line;
    }

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
