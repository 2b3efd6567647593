// input.hpp: takes a fuzzer's bytes from the front, and aborts where a requirement does not hold.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace fuzz {

using Bytes = std::span<const std::uint8_t>;

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : left_(data, size) {}

    bool empty() const { return left_.empty(); }

    // At most so many; fewer at the end.
    Bytes take(std::size_t most)
    {
        const Bytes taken = left_.first(std::min(most, left_.size()));
        left_ = left_.subspan(taken.size());
        return taken;
    }

    // Missing bytes are zero.
    template <class Plain>
    Plain value()
    {
        Plain plain{};
        const Bytes bytes = take(sizeof plain);
        std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t*>(&plain));
        return plain;
    }
    std::uint8_t byte() { return value<std::uint8_t>(); }

    // Its length is in its first byte.
    std::string text()
    {
        const Bytes bytes = take(byte());
        return {bytes.begin(), bytes.end()};
    }

private:
    Bytes left_;
};

inline void require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

// One line that is safe to print on a terminal.
inline void require_printable(std::string_view line)
{
    require(std::ranges::none_of(line, [](unsigned char c) { return c < 0x20 || c == 0x7f; }),
            "no control character is printed");
}

} // namespace fuzz
