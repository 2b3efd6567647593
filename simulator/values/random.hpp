// random.hpp: random numbers determined by the seed.
#pragma once

#include <cstdint>
#include <string_view>

namespace vorsim::values {

// splitmix64
class Random {
public:
    // Every name has a sequence of its own.
    Random(std::uint64_t seed, std::string_view name) : state_(0xcbf29ce484222325U ^ seed)
    {
        for (const char character : name) { // FNV-1a
            state_ = (state_ ^ static_cast<unsigned char>(character)) * 0x100000001b3U;
        }
    }

    std::uint64_t draw(std::uint64_t below)
    {
        state_ += 0x9e3779b97f4a7c15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
        return (mixed ^ (mixed >> 31U)) % below;
    }

private:
    std::uint64_t state_;
};

} // namespace vorsim::values
