// file.hpp: a fuzzer's bytes as a file, for what reads files.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

#include "processes.hpp"

namespace fuzz {

inline std::string file_of(const std::uint8_t* data, std::size_t size)
{
    static const processes::TemporaryDirectory place;
    std::string path = (place.path() / "file").string();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return path;
}

} // namespace fuzz
